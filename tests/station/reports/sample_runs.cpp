/* SPDX-License-Identifier: MIT
 *
 * Journals of runs as they come from the line: what reports are tried on.
 */
#include "sample_runs.h"

constexpr const char *too_many = "9 FCS errors; expected at most 4.";
constexpr const char *no_link = "No link at the last check; expected a link. No frame was sent.";

static void add_packet(journal_builder &journal, int ports, int failing = 0, int untested = 0)
{
    journal.begin("packet").wait(19.4);
    for (int port = 1; port <= ports; port++) {
        const char *outcome = port == failing ? "fail" : port == untested ? "not-tested" : "pass";
        const char *message = port == failing ? no_link : port == untested ? "Another port refused its settings." : "";
        journal.measure(port, "code", port == failing ? 1 : 0).judge(port, "link", outcome, message);
    }
    journal.whole(failing > 0 ? "fail" : "pass", failing > 0 ? "Ports failed the packet test." : "Every port passed.");
}

/* One port does not pass: with what outcome. */
static void add_broadcast(journal_builder &journal, int ports, int attempt, int other = 0,
                          const std::string &outcome = "pass")
{
    journal.begin("broadcast", attempt, 2).wait(14.2);
    for (int port = 1; port <= ports; port++) {
        const bool is_other = port == other;
        journal.measure(port, "fcs_errors", is_other ? 9 : 0, 4)
            .measure(port, "frames", 500)
            .judge(port, "fcs-errors", is_other ? outcome : "pass", is_other ? too_many : "");
    }
    journal.whole(outcome, other > 0 ? "1 port failed" : "Every port passed.");
}

static void add_poe(journal_builder &journal, int ports, int failing = 0)
{
    journal.begin("poe").wait(31.5);
    for (int port = 1; port <= ports - 4; port++) {
        const bool fails = port == failing;
        journal.measure(port, "pd_class", 4).measure(port, "overload_code", fails ? 3 : 0);
        for (const char *check : {"power-state", "pd-class", "power-off"})
            journal.judge(port, check, "pass");
        journal.judge(port, "overload", fails ? "fail" : "pass",
                      fails ? "The port kept its power under overload; expected it to switch off." : "");
    }
    journal.whole(failing > 0 ? "fail" : "pass", failing > 0 ? "1 port failed the PoE test." : "Every port passed.");
}

journal_builder passing_run(int ports)
{
    journal_builder journal("SW28-0041", ports);
    add_packet(journal, ports);
    add_broadcast(journal, ports, 1);
    add_poe(journal, ports);
    return journal.end("COMPLETE", "PASS");
}

journal_builder failing_run(int ports)
{
    journal_builder journal("SW28-0042", ports);
    add_packet(journal, ports, 13, 20);
    add_broadcast(journal, ports, 1, 5, "fail-retried");
    add_broadcast(journal, ports, 2);
    add_poe(journal, ports, 7);
    return journal.end("COMPLETE", "FAIL");
}

journal_builder erring_run()
{
    journal_builder journal("SW28-0043", 28);
    add_packet(journal, 28);
    journal.begin("poe").wait(120).error("timeout", "The service did not answer within 120 s; expected 26 s.");
    return journal.end_step("ERROR").end("ERROR", "NOT_APPLICABLE");
}

journal_builder interrupted_run()
{
    journal_builder journal("SW28-0044", 28);
    add_packet(journal, 28);
    journal.begin("poe", 1, 1, 24).note("The run was interrupted.").end_step("SKIP");
    journal.run({{"error", {{"symptom", "interrupted"}, {"message", "The run was interrupted by SIGTERM."}}}});
    return journal.end("SKIP", "NOT_APPLICABLE");
}

journal_builder incomplete_run(int ports)
{
    journal_builder journal("SW28-0045", ports);
    add_packet(journal, ports);
    return journal.begin("poe").wait(3).measure(1, "pd_class", 4).judge(1, "overload", "pass");
}

journal_builder partial_run()
{
    journal_builder journal("SW28-0046", 28, 0, {{"only", "packet"}});
    add_packet(journal, 28);
    return journal.leave_out("broadcast").leave_out("poe").end("SKIP", "NOT_APPLICABLE");
}

journal_builder hostile_run()
{
    journal_builder journal("=cmd|' /C calc'!A0", 4);
    journal.begin("<script>alert(1)</script>").measure(1, "-2+3", "@SUM(1,2)").measure(1, "delta", -5);
    journal.judge(1, "a\"b,c", "fail", "\x1b[31mred\x01 ]]> & \"quoted\", line\r\nend \xE2\x80\xAE")
        .judge(1, "a\"b,c", "fail", "the same check again");
    return journal.whole("fail", "{{serial}} '</td>").end("COMPLETE", "FAIL");
}
