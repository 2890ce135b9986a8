/* SPDX-License-Identifier: MIT
 *
 * Every request beyond the packet test: the station's whole output against boards with and without faults, as
 * transcripts tell it, and what it says to replies that no board sends.
 */
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "facmsg_protocol.h"
#include "programs.h"
#include "transcripts.h"

static const std::string who = "facmsg-station: ";

TEST(requests, transcripts)
{
    play_transcripts(TRANSCRIPTS, [](const simulated_switch &board, const words &line) { return board.run(line); });
}

TEST(requests, fpga_gives_back_what_was_written)
{
    const simulated_switch healthy("healthy-28");
    const temporary_folder folder;
    std::string data;
    for (int i = 0; i < 204; i++) /* seven writes and four reads, the last ones shorter, at 0.1 s each */
        data += static_cast<char>(i * 7);
    std::ofstream(folder.path + "/in") << data;
    EXPECT_EQ(healthy.run({"fpga", "write", "20000", "--file", folder.path + "/in"}),
              (finished{0,
                        "NOT JUDGED  204 bytes sent to FPGA address 0x20000; only reading them back shows\n"
                        "            that they arrived\n",
                        ""}));
    EXPECT_EQ(healthy.run({"fpga", "read", "20000", "204", "--output", folder.path + "/out"}),
              (finished{0, "NOT JUDGED  204 bytes read from FPGA address 0x20000\n", ""}));
    std::ostringstream read_back;
    read_back << std::ifstream(folder.path + "/out").rdbuf();
    EXPECT_EQ(read_back.str(), data);
    EXPECT_EQ(healthy.run({"fpga", "read", "0x20020", "4", "--port", "2"}).out.substr(0, 18), "0000  e0 e7 ee f5\n");
    EXPECT_EQ(simulated_switch("fpga-silent").run({"fpga", "read", "0", "4"}),
              (finished{0,
                        "0000  00 00 00 00\nNOT JUDGED  4 bytes read from FPGA address 0x0, all zero; the same is "
                        "read when\n            the FPGA does not answer\n",
                        ""}));
}

TEST(requests, switched_medium_comes_back)
{
    const simulated_switch mixed("mixed");
    for (const std::string medium : {"fiber", "copper", "fiber"})
        EXPECT_TRUE(mixed.run({"switch-medium"}).out.ends_with("; the last one's medium is now " + medium + "\n"));
}

TEST(requests, upgrade_asks)
{
    const finished asked = run_on_terminal({"poe-upgrade"}, "n\n");
    EXPECT_EQ(asked.code, 3);
    EXPECT_NE(asked.out.find("not confirmed; nothing was sent"), std::string::npos) << asked.out;
}

/* What is to be said, with the exit code, to a reply that a test makes. */
template <class Record>
static void expect(const words &arguments, void (*change)(Record &), int code, const std::string &said)
{
    const finished end = fake_service(reply_of<Record>(0, change)).run(arguments);
    EXPECT_EQ(end.code, code) << end;
    EXPECT_NE((end.out + end.err).find(said), std::string::npos) << said << "\n" << end;
}

/* Two ports, 255 and, with a 0 for it, 256. */
static poe_test_reply &two_ports(poe_test_reply &reply)
{
    reply.port_count = 2;
    reply.ports[0] = 255;
    return reply;
}

TEST(requests, poe_replies_that_no_board_sends)
{
    using reply = poe_test_reply;
    expect<reply>(
        {"poe"}, [](auto &r) { two_ports(r); }, 0, " 256  PASS           ok      0");
    expect<reply>(
        {"poe"}, [](auto &r) { two_ports(r).ports[1] = 255; }, 3, "entry 2 of the reply names port 255");
    expect<reply>(
        {"hpoe"}, [](auto &r) { two_ports(r).ports[1] = 255; }, 0, "PASS  2 ports tested");
    expect<reply>(
        {"hpoe"}, [](auto &r) { r.port_count = 257; }, 3, "the reply counts 257 ports");
    expect<reply>(
        {"poe"}, [](auto &r) { two_ports(r).power_off_code[0] = 20; }, 3, "the reply contradicts itself");
    expect<reply>(
        {"poe"}, [](auto &r) { two_ports(r).state_code[1] = 1 << 16 | 15; }, 3, "256: Code 65551 makes no sense");
    expect<reply>(
        {"poe"}, [](auto &r) { two_ports(r).result = 1; }, 1, "the service still reports a failure");
    expect<reply>(
        {"box-hpoe"}, [](auto &) {}, 3, "no high-power port, so nothing was tested");
    expect<poe_mcu_ver_reply>(
        {"poe-version"}, [](auto &r) { r.result = 2; }, 3, "the host lacks the function");
}

TEST(requests, other_replies_that_no_board_sends)
{
    expect<broadcast_test_record>(
        {"broadcast"}, [](auto &r) { r.result = 1, r.port_count = 2, r.port_results[1] = 1; }, 1,
        "2 ports, none of which reports link 1 (1 another link value than 0);");
    expect<broadcast_test_record>(
        {"broadcast"}, [](auto &r) { r.port_count = 1, r.port_results[0] = 1 << 16 | 7; }, 1, "7           -");
    expect<broadcast_test_record>(
        {"broadcast"}, [](auto &r) { r.port_count = 1, r.port_results[0] = 1 << 16, r.fcs_counts[0] = 1ull << 40; }, 1,
        "1099511627776 FCS errors; expected 0.");
    expect<ess_flow_reply>(
        {"flow"}, [](auto &r) { r.result = 3; }, 3, "(result 3): the service ran out of memory");
    expect<ess_flow_reply>(
        {"flow"}, [](auto &r) { r.port_count = 1, r.fail_stage = 12; }, 3, "the reply's fail stage 12 is unknown");
    expect<ess_flow_reply>(
        {"flow", "--ports", "7"}, [](auto &r) { r.port_count = 2, r.fail_stage = 9, r.port_cnt_err[1] = 1; }, 1,
        "2  FAIL        Received 0 frames and transmitted 0; expected equal");
    expect<ess_flow_reply>(
        {"flow"}, [](auto &r) { r.port_count = r.port_down[0] = 1; }, 3, "its fail stage is 0 (passed), but");
    expect<ess_flow_reply>(
        {"flow"}, [](auto &r) { r.port_count = 2, r.fail_stage = 9, r.port_fcs_err[1] = 7; }, 3,
        "position 2: A flag is 7");
    expect<serpentine_flow_reply>(
        {"serpentine"}, [](auto &r) { r.port_count = 1, r.fail_stage = 9; }, 1, "so the CPU received another");
    expect<serpentine_flow_reply>(
        {"serpentine"},
        [](auto &r) { r.port_count = r.port_ex_err[0] = 1, r.fail_stage = 9, r.cpu_send_cnt = r.ex_pkts[0] = 20000; },
        3, "position 1: The reply marks the count of 20000 frames as wrong");
    expect<prbs_test_reply>(
        {"prbs"}, [](auto &r) { r.port_count = 1, r.fail_stage = 7; }, 1, "stage 7: a port's PHY loopback could not");
    expect<fpga_record>(
        {"fpga", "read", "10", "8"}, [](auto &r) { r.result = 3; }, 3, "for 8 bytes at address 0x10 (result 3)");
    expect<fpga_record>(
        {"fpga", "read", "10", "8"}, [](auto &r) { r.addr = 0; }, 3, "its ADDRESS word is 0; expected 16");
}

/* What a port's counters show. */
struct counters {
    uint32_t transmitted, received, damaged = 0;
};

/* The reply of a service that sent 20000 frames into a chain of ports with these counters. */
static responder chain_reply(const std::vector<counters> &ports)
{
    return reply_of<serpentine_flow_reply>(0, [=](serpentine_flow_reply &reply) {
        reply.port_count = static_cast<uint32_t>(ports.size());
        reply.fail_stage = FACMSG_STAGE_STATISTICS;
        uint64_t expected = reply.cpu_send_cnt = 20000;
        for (size_t i = 0; i < ports.size(); i++) {
            const auto [transmitted, received, damaged] = ports[i];
            if ((reply.port_ex_err[i] = transmitted != expected))
                reply.ex_pkts[i] = transmitted;
            if ((reply.port_in_err[i] = received != expected))
                reply.in_pkts[i] = received;
            if ((reply.port_fcs_err[i] = damaged != 0))
                reply.fcs[i] = damaged;
            expected = uint64_t{received} - damaged;
        }
    });
}

/* The ports' verdicts: Pass, Fail, Not judged. */
TEST(requests, serpentine_blames_the_port_that_is_at_fault)
{
    constexpr uint32_t all = 20000, some = 19990;
    const std::pair<std::vector<counters>, std::string> cases[] = {
        {{{all, all}, {all, all}}, "PP"}, /* only the CPU got too few */
        /* counters that stand still */
        {{{all, 0}, {all, all}, {all, all}}, "FPP"},
        {{{all, all}, {all, all}, {all, 0}}, "PPF"},
        {{{all, all}, {0, all}, {all, all}}, "PFP"},
        {{{all, all}, {0, 0}, {all, all}, {all, all}}, "PFPP"},
        {{{all, all}, {0, 0}, {0, 0}, {all, all}}, "PFFP"},
        {{{all, all}, {0, 0}, {0, 0}, {some, some}, {some, some}}, "PFNNP"},
        {{{all, all}, {some, some}, {some, some}, {0, 0}, {0, 0}, {some, some}}, "PFPFFP"},
        {{{all, 0}, {all, 0}, {all, all}}, "FFP"},
        {{{all, 0}, {0, all}, {all, all}}, "FFP"},
        {{{all, 0, 3}, {all, all}, {all, all}}, "FNP"},
        /* frames lost, or doubled, at a port and between two */
        {{{all, all}, {all, some}, {some, some}}, "PFP"},
        {{{all, all}, {some, some}, {some, some}}, "PFP"},
        {{{all, all}, {all, all + 5}, {all + 5, all + 5}}, "PFP"},
        {{{all, some}, {some, some}, {some - 5, some - 5}}, "FPF"},
        {{{all, some}, {some - 5, some - 5}, {some - 5, some - 5}}, "FFP"},
        {{{all, 0}, {some, some}, {some, some}}, "FNP"}, /* lost before or after the port that does not count */
        /* damaged frames, and a port that only counts them */
        {{{all, all, 20}, {all - 20, all - 20}, {all - 20, all - 20}}, "FPP"},
        {{{all, all, 20}, {all - 30, all - 30}, {all - 30, all - 30}}, "FFP"},
        {{{all, all, 20}, {all, all}, {all, all}}, "FNP"},
    };
    for (const auto &[ports, verdicts] : cases) {
        const finished end = fake_service(chain_reply(ports)).run({"serpentine", "--json"});
        std::string found;
        const auto report = nlohmann::json::parse(end.out);
        for (const auto &port : report["ports"])
            found += port["verdict"].get<std::string>()[0];
        EXPECT_EQ(found, verdicts) << end;
        EXPECT_EQ(end.code, 1);
    }
}

/* Millions of frames: under a sanitizer, which slows them by an order of magnitude, the smallest board has to do. */
TEST(requests, healthy_boards_pass_the_traffic_tests)
{
    std::vector<std::string> boards = {"healthy-2", "healthy-27", "healthy-28", "healthy-52", "cabled-28"};
    if (SANITIZED)
        boards.resize(1);
    for (const std::string &board : boards) {
        const simulated_switch healthy(board);
        for (const std::string request : {"flow", "broadcast-flow", "serpentine"}) {
            const finished end = healthy.run({request});
            EXPECT_EQ(end.code, 0) << board << "\n" << end;
        }
    }
}
