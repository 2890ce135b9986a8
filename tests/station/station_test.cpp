/* SPDX-License-Identifier: MIT
 *
 * The station as its users meet it: the real program, its whole output and its exit code, against the simulated switch
 * and, for replies that no sound service sends, against a fake one.
 */
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include "facmsg_protocol.h"
#include "programs.h"

static const std::string who = "facmsg-station: ";
static const std::string no_link = "No link at the last check; expected a link. No frame was sent.";
static const std::string wrong_count =
    "The count of frames that came back was not 500 after the wait, or could not be read; expected exactly 500. With a "
    "cable, the fault may be at its other end.";

/* The table for 28 ports that all passed but for the rows given. */
static std::string table(const std::string &settings, const std::map<int, std::string> &rows, const std::string &end)
{
    std::string text = "Packet test of unit 0: " + settings + "\n\nport  verdict     code  reason\n";
    for (int port = 1; port <= 28; port++) {
        const std::string number = std::string(port < 10 ? "   " : "  ") + std::to_string(port);
        text += number + (rows.contains(port) ? rows.at(port) : "  PASS           0") + "\n";
    }
    return text + "\n" + end;
}

static const std::map<int, std::string> faulty_rows{
    {13, "  FAIL           1  No link at the last check; expected a link. No frame was\n"
         "                        sent."},
    {20, "  FAIL           3  The count of frames that came back was not 500 after the\n"
         "                        wait, or could not be read; expected exactly 500. With a\n"
         "                        cable, the fault may be at its other end."}};

TEST(packet, healthy_board_passes)
{
    const simulated_switch healthy("healthy-28");
    EXPECT_EQ(healthy.run({"packet", "--any-speed"}),
              (finished{0, table("any speed", {}, "PASS  28 ports tested: 28 passed, 0 failed\n"), ""}));
    EXPECT_EQ(
        healthy.run({"packet", "--speed", "10G"}),
        (finished{3, "",
                  who + "packet: the test is not possible (result 8): the host lacks a driver function (log-level "
                        "1 shows which), the medium or duplex is not valid, or no port can do what was asked for "
                        "(speed 10G, duplex 2, medium copper)\n"}));
}

TEST(packet, faulty_board_names_the_failing_ports)
{
    const simulated_switch faulty("faulty-28");
    EXPECT_EQ(faulty.run({"packet", "--any-speed"}),
              (finished{1, table("any speed", faulty_rows, "FAIL  28 ports tested: 26 passed, 2 failed\n"), ""}));
}

TEST(packet, json_says_the_same)
{
    const simulated_switch faulty("faulty-28");
    nlohmann::ordered_json expected{{"request",
                                     {{"name", "packet"},
                                      {"type", 0},
                                      {"payload_bytes", 1052},
                                      {"unit", 0},
                                      {"any_speed", 1},
                                      {"speed", 3},
                                      {"duplex", 2},
                                      {"medium", 0}}},
                                    {"result", 1},
                                    {"verdict", "FAIL"},
                                    {"exit_code", 1},
                                    {"summary", "28 ports tested: 26 passed, 2 failed"}};
    const std::map<int, std::pair<int, std::string>> failing{{13, {1, no_link}}, {20, {3, wrong_count}}};
    for (int port = 1; port <= 28; port++) {
        const auto [code, reason] = failing.contains(port) ? failing.at(port) : std::pair{0, std::string()};
        expected["ports"].push_back(
            {{"port", port}, {"code", code}, {"verdict", code == 0 ? "PASS" : "FAIL"}, {"reason", reason}});
    }
    EXPECT_EQ(faulty.run({"--json", "packet", "--any-speed"}), (finished{1, expected.dump(2) + "\n", ""}));
}

TEST(service_control, every_request_and_every_refusal)
{
    const simulated_switch healthy("healthy-28");
    const std::pair<words, std::string> cases[] = {
        {{"log-level", "0"}, "PASS  the service's log level is now 0\n"},
        {{"poe-debug", "-3"}, "PASS  the PoE driver's debug level is now -3\n"},
        {{"port-debug", "0x10"}, "PASS  the port driver's debug level is now 16\n"},
        {{"factory-mode"}, "PASS  the switch is in factory mode\n"},
        {{"raw", "9", "01 00", "0000", "--size", "8"},
         "0000  01 00 00 00 00 00 00 00\nNOT JUDGED  request type 9 was answered with 8 payload bytes\n"},
    };
    for (const auto &[arguments, out] : cases)
        EXPECT_EQ(healthy.run(arguments), (finished{0, out, ""}));
    EXPECT_EQ(healthy.run({"raw", "19", "00"}),
              (finished{3, "",
                        who + "raw: the service took the request but did not answer with the expected 1 bytes: it does "
                              "not know or support request type 19, or it closed the connection early\n"}));

    const simulated_switch poor("healthy-28",
                                {"--drop-slot", "set_factory_mode", "--drop-slot", "set_port_debug_level"});
    EXPECT_EQ(poor.run({"port-debug", "2"}),
              (finished{3, "",
                        who + "port-debug: the port driver's debug level was not set to 2: the host lacks the function "
                              "or it failed\n"}));
    const finished json = poor.run({"factory-mode", "--json"});
    EXPECT_EQ(json.code, 3);
    EXPECT_EQ(
        nlohmann::ordered_json::parse(json.out),
        (nlohmann::ordered_json{{"request", {{"name", "factory-mode"}, {"type", 10}, {"payload_bytes", 4}}},
                                {"result", -1},
                                {"verdict", "NO VERDICT"},
                                {"exit_code", 3},
                                {"error", "factory mode was not entered: the host lacks the function or it failed"}}));
}

TEST(list, has_a_row_for_every_request)
{
    std::set<int> types;
    const auto rows = nlohmann::json::parse(run({"list", "--json"}).out)["subcommands"];
    for (const auto &row : rows)
        types.insert(row.value("type", -1));
    EXPECT_EQ(types, (std::set{-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 20, 23, 24, 25, 26}));
    const std::string text = run({"list"}).out;
    EXPECT_EQ(text.find("subcommand      type  reply bytes  what it does\n"
                        "packet             0         1052  loop 500 frames through every matching port\n"),
              0u);
    EXPECT_TRUE(text.ends_with("raw              any      as sent  send any request, show the reply in\n"
                               "                                   hexadecimal\n"
                               "list               -            -  show this table\n"
                               "plan               -            -  run a test plan, record and report it\n"
                               "report             -            -  write the reports of a run anew, show its\n"
                               "                                   verdict\n"
                               "check              -            -  check the journal of a run, line by line\n"
                               "history            -            -  show what a folder of runs says\n"))
        << text;
}

TEST(unreachable, each_reason_has_its_sentence)
{
    const temporary_folder folder;
    const std::string where = "tmp/.factory_ssa_socket in directory '" + folder.path + "'";
    const auto expect = [&](const std::string &reason, uid_t user = 0) {
        EXPECT_EQ(run({"factory-mode", "--directory", folder.path}, user),
                  (finished{3, "", who + "factory-mode: " + reason + "\n"}));
    };
    EXPECT_EQ(run({"factory-mode", "--directory", folder.path + "/none"}),
              (finished{3, "",
                        who + "factory-mode: cannot enter directory '" + folder.path + "/none': no such directory\n"}));
    expect("there is no socket " + where + "; is the host running with that working directory?");
    std::ofstream(folder.socket()) << "not a socket";
    expect(where + " is not a socket; is the host running with that working directory?");
    std::filesystem::remove(folder.socket());
    {
        const listener owner_only(folder);
        std::filesystem::permissions(folder.socket(), std::filesystem::perms{0600});
        if (geteuid() == 0) /* only root can become somebody else */
            expect("permission denied on " + where + "; only the user that runs the host may connect", 65534);
    }
    expect("nobody listens on " + where + "; the host has gone and left its socket file behind");
}

/* It says nothing about the request or the unit. */
TEST(unreachable, a_host_that_ends_is_told_as_that)
{
    const std::string then = "; nobody listens on tmp/.factory_ssa_socket in directory '";
    for (const bool begun : {true, false}) {
        const temporary_folder folder;
        auto host = std::make_optional<listener>(folder);
        int err[2];
        ASSERT_EQ(pipe2(err, O_CLOEXEC), 0);
        const pid_t pid = start(station({"factory-mode", "--directory", folder.path}), STDOUT_FILENO, err[1]);
        close(err[1]);
        int connection = -1;
        if (begun) {
            connection = accept4(host->fd, nullptr, nullptr, SOCK_CLOEXEC);
            char request[12];
            EXPECT_EQ(recv(connection, request, sizeof(request), MSG_WAITALL), ssize_t{sizeof(request)});
            usleep(500'000); /* the station has looked at its request meanwhile */
        } else {
            char waiting;
            EXPECT_EQ(read(err[0], &waiting, 1), 1);
        }
        host.reset();
        close(connection);
        EXPECT_EQ(wait_for(pid), 3);
        char told[1000] = "";
        EXPECT_GT(read(err[0], told, sizeof(told) - 1), 0);
        const std::string sentence =
            (begun ? "the host ended while the request was at work" : "the host ended before it began the request") +
            then + folder.path + "' any more\n";
        EXPECT_TRUE(std::string(told).ends_with(sentence)) << told;
        close(err[0]);
    }
}

TEST(usage, errors_name_the_option_the_value_and_what_is_allowed)
{
    const std::string speeds = "allowed: 10M, 100M, 1G, 2.5G, 5G, 10G or 0 to 255";
    const std::pair<words, std::string> cases[] = {
        {{}, "no subcommand given; 'facmsg-station list' shows them all"},
        {{"pakcet"}, "unknown subcommand 'pakcet', did you mean packet?"},
        {{"packet", "--spede", "1G"}, "packet: unknown option '--spede', did you mean --speed?"},
        {{"packet", "--speed", "7G"}, "packet: --speed: found '7G', " + speeds},
        {{"packet", "--speed", "a\nb"}, "packet: --speed: found 'a\\nb', " + speeds},
        {{"packet", "--directory"},
         "packet: --directory: expected exactly one value, allowed: the host's working directory"},
        {{"packet", "--speed", "256"}, "packet: --speed: found '256', " + speeds},
        {{"packet", "--speed"}, "packet: --speed: expected exactly one value, " + speeds},
        {{"packet", "--speed", "1G", "--speed", "5G"}, "packet: --speed: expected exactly one value, " + speeds},
        {{"packet", "--any-speed=1"}, "packet: --any-speed: takes no value"},
        {{"packet", "--medium", "glass"}, "packet: --medium: found 'glass', allowed: copper, fiber or 0 to 1"},
        {{"packet", "--unit", "-1"}, "packet: --unit: found '-1', allowed: 0 to 4294967295"},
        {{"packet", "list"}, "packet: found 'list', but no more arguments are allowed"},
        {{"log-level"}, "log-level: LEVEL: expected exactly one value, allowed: -2147483648 to 2147483647"},
        {{"log-level", "2x"}, "log-level: LEVEL: found '2x', allowed: -2147483648 to 2147483647"},
        {{"fpga", "write", "10000000000", "00"},
         "fpga write: ADDRESS: found '10000000000', allowed: 0x0 to 0xffffffff"},
        {{"fpga", "write", "0", "0011"}, "fpga write: HEX: found 2 bytes, allowed: a multiple of 4, at least 4"},
        {{"fpga", "write", "0", "00112233", "--file", "/dev/zero/x"},
         "fpga write: --file: found '/dev/zero/x' (a part of the path is no directory), allowed: a file that can be "
         "read, or -"},
        {{"fpga", "write", "0"}, "fpga write: HEX: found nothing, allowed: data in HEX or with --file"},
        {{"fpga", "write", "fffffffc", "0011223344556677"},
         "fpga write: ADDRESS: found '0xfffffffc', allowed: up to 0xfffffff8 for 8 bytes"},
        {{"fpga", "read", "0", "6"}, "fpga read: LENGTH: found '6', allowed: 4 to 16777216, a multiple of 4"},
        {{"fpga", "read", "0", "8", "--port", "3"}, "fpga read: --port: found '3', allowed: 1 to 2"},
        {{"fpga"}, "fpga: no subcommand given, expected one of write, read"},
        {{"fpga", "wriet"}, "fpga: unknown subcommand 'wriet', did you mean write?"},
        {{"fpga", "write", "0", "00112233", "--file", "/dev/null"},
         "fpga write: --file: found beside HEX, allowed: one of the two"},
        {{"fpga", "write", "0", "--file", "/"},
         "fpga write: --file: found '/' (is a directory), allowed: a file that can be read, or -"},
        {{"fpga", "read", "0", "4", "--output", "/none/x"},
         "fpga read: --output: found '/none/x' (no such directory), allowed: a file that can be written"},
        {{"packet", "--any-speed", "--duplex", "2"},
         "packet: --duplex: found beside --any-speed, allowed: one of the two"},
        {{"vop", "--min", "6", "--max", "5"}, "vop: --min: found '6', allowed: at most the 5 of --max"},
        {{"--speed", "1G", "packet"}, "packet: option '--speed' stands before the subcommand, allowed: after it"},
        {{"packet", "--fcs-limit=3"}, "packet: option '--fcs-limit' belongs to broadcast, not to packet"},
        {{"--vesrion"}, "unknown option '--vesrion', did you mean --version?"},
        {{"--jason"}, "unknown option '--jason', did you mean --json?"},
        {{"--verdict"},
         "unknown option '--verdict', expected one of --help, --directory, --json, --no-progress, --version"},
        {{"plan", "--dri-run"}, "plan: unknown option '--dri-run', did you mean --dry-run?"},
        {{"plan", "/none.toml"}, "plan: /none.toml: no such file, expected a plan file"},
        {{"broadcast", "--fcs-limit", "-1"}, "broadcast: --fcs-limit: found '-1', allowed: 0 to 4294967295"},
        {{"flow", "--ports", "3,1"},
         "flow: --ports: found '3,1', allowed: ascending numbers from 1 to 256, as in 1-4,8"},
        {{"prbs", "--ports"}, "prbs: --ports: expected exactly one value"},
        {{"poe-upgrade"}, "poe-upgrade: --yes: needed for poe-upgrade when nobody can be asked"},
        {{"raw", "0", "abc"}, "raw: HEX: found 'abc', allowed: pairs of hexadecimal digits for up to 8088 bytes"},
        {{"raw", "0", "aabb", "--size", "1"}, "raw: --size: found '1', allowed: not less than the 2 bytes of HEX"},
    };
    for (const auto &[arguments, message] : cases)
        EXPECT_EQ(run(arguments), (finished{2, "", who + message + "\n"}));
    EXPECT_EQ(run({"--json", "pakcet"}).out, "{\n  \"verdict\": \"NO VERDICT\",\n  \"exit_code\": 2,\n  \"error\": "
                                             "\"unknown subcommand 'pakcet', did you mean packet?\"\n}\n");
}

/* A packet reply for ports 1 to 28 that all passed, changed by a test. */
static responder packet_reply(const std::function<void(packet_test_record &)> &change)
{
    return reply_of<packet_test_record>(FACMSG_PACKET_TEST, [=](packet_test_record &record) {
        record.port_count = 28;
        for (uint32_t i = 0; i < 28; i++)
            record.port_results[i] = FACMSG_PORT_RESULT(i + 1, FACMSG_PORT_OK);
        change(record);
    });
}

TEST(packet, replies_that_make_no_sense_give_no_verdict)
{
    const std::pair<void (*)(packet_test_record &), std::string> cases[] = {
        {[](auto &reply) { reply.result = 2; }, "the reply's result is 2; expected 0, 1 or 8"},
        {[](auto &reply) { reply.port_count = 257; }, "the reply counts 257 ports; expected 1 to 256"},
        {[](auto &reply) { reply.port_count = 0; }, "the reply counts 0 ports; expected 1 to 256"},
        {[](auto &reply) { reply.port_count = 29; },
         "entry 29 of the reply names port 0; expected ascending ports from 1 to 256"},
        {[](auto &reply) { reply.port_results[3] = FACMSG_PORT_RESULT(3, 0); },
         "entry 4 of the reply names port 3; expected ascending ports from 1 to 256"},
        {[](auto &reply) { reply.unit = 9; },
         "the reply does not belong to this request: its --unit word is 9; expected 0"},
        {[](auto &reply) { reply.port_results[6] = FACMSG_PORT_RESULT(7, 4); },
         "port 7: Code 4 makes no sense here, so nothing can be said about this port; expected 0, 1 or 3."},
        {[](auto &reply) { reply.port_results[6] = FACMSG_PORT_RESULT(7, FACMSG_PORT_RECEIVE_COUNT); },
         "the reply contradicts itself: its result is 0 (passed), but 28 ports tested: 27 passed, 1 failed"},
    };
    for (const auto &[change, sentence] : cases) {
        const finished end = fake_service(packet_reply(change)).run({"packet"});
        EXPECT_EQ(end.code, 3);
        EXPECT_EQ(end.err, who + "packet: " + sentence + "\n");
        EXPECT_EQ(end.out.find("PASS  28"), std::string::npos);
    }
    const responder half = [](const std::string &, int) { return std::string(8, '\0'); };
    EXPECT_EQ(fake_service(half).run({"packet"}).err,
              who + "packet: the service took the request but did not answer with the expected 1052 bytes: it does not "
                    "know or support request type 0, or it closed the connection early\n");
}

/* The codes of a failed test, the verdicts on its ports, and what else is said. */
TEST(packet, codes_mean_what_the_end_of_the_test_makes_of_them)
{
    const std::string nonsense = " makes no sense here, so nothing can be said about this port";
    const struct {
        std::vector<uint32_t> codes;
        int exit_code;
        std::string verdicts, said;
    } cases[] = {
        {{0, 1, 3}, 1, "PASS, FAIL, FAIL", "3 ports tested: 1 passed, 2 failed"},
        {{0, 0}, 1, "PASS, PASS", "2 passed, 0 failed; the service still reports a failure: a port's status"},
        {{0, 2, 1, 2}, 1, "NOT TESTED, FAIL, FAIL, FAIL", "before anything was counted, as port 4 could not send."},
        {{0, 6, 1},
         1,
         "NOT TESTED, FAIL, NOT TESTED",
         "Another port refused its settings. Before that it had no link."},
        {{7, 6}, 1, "NOT TESTED, FAIL", "Another port refused its settings. Before that its status could not be read."},
        {{7}, 3, "", "the test could not start, so nothing is known of 1 port (code 7 at each)"},
        {{0, 7}, 3, "PASS, NO VERDICT", "port 2: Code 7" + nonsense},
        {{3, 2}, 3, "NO VERDICT, FAIL", "port 1: Code 3" + nonsense},
        {{2, 0}, 3, "NO VERDICT, PASS", "port 1: Code 2" + nonsense},
    };
    for (const auto &[codes, exit_code, verdicts, said] : cases) {
        const fake_service service(packet_reply([&](packet_test_record &reply) {
            reply.result = FACMSG_PACKET_FAIL;
            reply.port_count = static_cast<uint32_t>(codes.size());
            for (uint32_t i = 0; i < reply.port_count; i++)
                reply.port_results[i] = FACMSG_PORT_RESULT(i + 1, codes[i]);
        }));
        const finished end = service.run({"packet", "--json"});
        std::string found;
        const auto report = nlohmann::json::parse(end.out);
        for (const auto &port : report.value("ports", nlohmann::json::array()))
            found += (found.empty() ? "" : ", ") + port["verdict"].get<std::string>();
        EXPECT_EQ(end.code, exit_code) << end;
        EXPECT_EQ(found, verdicts);
        EXPECT_NE(end.out.find(said), std::string::npos) << said << "\n" << end;
    }
}

TEST(interruption, ends_the_station_at_once_and_says_what_goes_on)
{
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        std::promise<void> received;
        const fake_service service([&](const std::string &, int connection) {
            received.set_value();
            char more;
            EXPECT_EQ(recv(connection, &more, 1, 0), 0); /* until the station has gone */
            return std::string();
        });
        int err[2];
        ASSERT_EQ(pipe2(err, O_CLOEXEC), 0);
        const pid_t pid = start(station({"packet", "--directory", service.folder.path}), STDOUT_FILENO, err[1]);
        close(err[1]); /* so that reading ends with the station */
        received.get_future().wait();
        kill(pid, number);
        EXPECT_EQ(wait_for(pid), 128 + number);
        char sentence[200] = "";
        EXPECT_GT(read(err[0], sentence, sizeof(sentence) - 1), 0);
        EXPECT_EQ(sentence, who + "packet: interrupted; the service goes on with the request it has begun\n");
        close(err[0]);
    }
}

TEST(timeout, leaves_the_service_to_its_work)
{
    const fake_service service([&](const std::string &, int connection) {
        char more;
        EXPECT_EQ(recv(connection, &more, 1, 0), 0); /* until the station has gone */
        return std::string();
    });
    EXPECT_EQ(
        service.run({"packet", "--timeout", "1"}),
        (finished{3, "", who + "packet: no reply within 1 s; the service goes on with the request it has begun\n"}));
}

TEST(terminal, progress_and_colour_only_where_they_can_be_seen)
{
    const std::string progress = "packet: 0 s elapsed, about 20 s expected, up to 160 s if ports fail";
    const std::string green = "\033[32mPASS\033[0m  28 ports";
    const auto shown = [](const words &options, unsigned short columns = 0) {
        const fake_service service(packet_reply([](auto &) {}));
        words arguments{"packet", "--directory", service.folder.path};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run_on_terminal(arguments, "", columns).out;
    };
    unsetenv("NO_COLOR");
    const std::string lively = shown({});
    EXPECT_NE(lively.find(progress), std::string::npos) << lively;
    EXPECT_NE(lively.find("\r\033[KPacket test of unit 0"), std::string::npos) << lively; /* the line is taken away */
    EXPECT_NE(lively.find(green), std::string::npos) << lively;
    setenv("NO_COLOR", "1", 1);
    const std::string quiet = shown({"--no-progress"});
    EXPECT_EQ(quiet.find('\033'), std::string::npos) << quiet;
    EXPECT_NE(quiet.find("PASS  28 ports tested"), std::string::npos) << quiet;
    const std::string narrow = shown({}, 50);
    EXPECT_NE(narrow.find("\033[K" + progress.substr(0, 49) + "\r"), std::string::npos) << narrow;
    setenv("TERM", "dumb", 1);
    unsetenv("NO_COLOR");
    const std::string dumb = shown({});
    EXPECT_EQ(dumb.find('\033'), std::string::npos) << dumb;
    EXPECT_EQ(dumb.find("packet: about 20 s expected, up to 160 s if ports fail\r\nPacket test of unit 0"), 0u) << dumb;
}
