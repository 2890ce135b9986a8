/* SPDX-License-Identifier: MIT
 *
 * What the station says: transcripts against boards with and without faults, and replies that no board sends.
 */
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "facmsg_protocol.h"
#include "programs.h"
#include "transcripts.h"

TEST(requests, transcripts)
{
    play_transcripts(TRANSCRIPTS);
}

/* A reply that no board sends, and what is said to it. */
template <class Record> struct odd_reply {
    words arguments;
    void (*change)(Record &);
    int code;
    const char *sentence;
};
template <class Record> static void expect(std::initializer_list<odd_reply<Record>> cases)
{
    for (const auto &[arguments, change, code, sentence] : cases) {
        const finished end = fake_service(reply_of<Record>(0, change)).run(arguments);
        EXPECT_EQ(end.code, code) << end;
        EXPECT_NE((end.out + end.err).find(sentence), std::string::npos) << sentence << "\n" << end;
    }
}

/* The verdicts on the ports by a letter each: Pass, Fail, not Tested, not Judged, no Verdict. */
static std::string letters_of(const finished &end)
{
    std::string letters;
    const auto report = nlohmann::json::parse(end.out);
    for (const auto &port : report.value("ports", nlohmann::json::array())) {
        const std::string word = port["verdict"];
        letters += word[word.rfind(' ') + 1];
    }
    return letters;
}

/* Ports from 1 that all passed. */
static auto &all_passed(auto &reply, uint32_t port_count = 28)
{
    reply.port_count = port_count;
    for (uint32_t i = 0; i < port_count; i++)
        reply.port_results[i] = FACMSG_PORT_RESULT(i + 1, FACMSG_PORT_OK);
    return reply;
}

/* Two ports, 255 and, with a 0 for it, 256. */
static poe_test_reply &two_ports(poe_test_reply &reply)
{
    reply.port_count = 2;
    reply.ports[0] = 255;
    return reply;
}

/* Two ports, or as many, and a test that stopped at the counts. */
static auto &stopped(auto &reply, uint32_t port_count = 2)
{
    reply.port_count = port_count;
    reply.fail_stage = FACMSG_STAGE_STATISTICS;
    return reply;
}

TEST(requests, replies_that_no_board_sends)
{
    expect<packet_test_record>({
        {{"packet"}, [](auto &r) { r.result = 2; }, 3, "packet: the reply's result is 2; expected 0, 1 or 8\n"},
        {{"packet"}, [](auto &r) { r.port_count = 257; }, 3, ": the reply counts 257 ports; expected 1 to 256\n"},
        {{"packet"}, [](auto &) {}, 3, ": the reply counts 0 ports; expected 1 to 256\n"},
        {{"packet"}, [](auto &r) { all_passed(r).port_count = 29; }, 3, "entry 29 of the reply names port 0; expected"},
        {{"packet"}, [](auto &r) { all_passed(r).port_results[3] = 3 << 16; }, 3, "entry 4 of the reply names port 3;"},
        {{"packet"}, [](auto &r) { r.unit = 9; }, 3, "not belong to this request: its --unit word is 9; expected 0\n"},
        {{"packet"}, [](auto &r) { all_passed(r).port_results[6] |= 4; }, 3, "7: Code 4 makes no sense here"},
        {{"packet"}, [](auto &r) { all_passed(r).port_results[6] |= 3; }, 3, "contradicts itself: its result is 0"},
    });
    expect<poe_test_reply>({
        {{"poe"}, [](auto &r) { two_ports(r); }, 0, " 256  PASS           ok      0"},
        {{"poe"}, [](auto &r) { two_ports(r).ports[1] = 255; }, 3, "entry 2 of the reply names port 255"},
        {{"hpoe"}, [](auto &r) { two_ports(r).ports[1] = 255; }, 0, "PASS  2 ports tested"},
        {{"hpoe"}, [](auto &r) { r.port_count = 257; }, 3, "the reply counts 257 ports"},
        {{"poe"}, [](auto &r) { two_ports(r).power_off_code[0] = 20; }, 3, "the reply contradicts itself"},
        {{"poe"}, [](auto &r) { two_ports(r).state_code[1] = 1 << 16 | 15; }, 3, "256: Code 65551 makes no sense"},
        {{"poe"}, [](auto &r) { two_ports(r).result = 1; }, 1, "the service still reports a failure"},
        {{"box-hpoe"}, [](auto &) {}, 3, "no high-power port, so nothing was tested"},
    });
    expect<poe_mcu_ver_reply>({{{"poe-version"}, [](auto &r) { r.result = 2; }, 3, "the host lacks the function"},
                               {{"poe-version"}, [](auto &r) { r.result = 3; }, 3, "is 3; expected 0, 1 or 2"}});
    expect<debug_level_record>({{{"log-level", "0"}, [](auto &r) { r.status = 1; }, 3, "is 1; expected 0 or -1"}});
    expect<broadcast_test_record>({
        {{"broadcast"},
         [](auto &r) { r.result = r.port_results[1] = 1, r.port_results[2] = 7, r.port_count = 3; },
         1,
         "link 1 (1 another link value than 0) (the\n      status of 1 could"},
        {{"broadcast"}, [](auto &r) { all_passed(r, 1).port_results[0] |= 7; }, 1, "7           -"},
        {{"broadcast"}, [](auto &r) { *all_passed(r, 1).fcs_counts = 1ull << 40; }, 1, "1099511627776 FCS errors;"},
    });
    expect<ess_flow_reply>({
        {{"flow"}, [](auto &r) { r.result = 3; }, 3, "(result 3): the service ran out of memory"},
        {{"flow"}, [](auto &r) { r.port_count = 1, r.fail_stage = 12; }, 3, "the reply's fail stage 12 is unknown"},
        {{"flow", "--ports", "7"}, [](auto &r) { stopped(r).port_cnt_err[1] = 1; }, 1, "2  FAIL        Received 0 fr"},
        {{"flow"}, [](auto &r) { r.port_count = r.port_down[0] = 1; }, 3, "its fail stage is 0 (passed), but"},
        {{"flow"}, [](auto &r) { stopped(r).port_fcs_err[1] = 7; }, 3, "position 2: A flag is 7"},
    });
    expect<serpentine_flow_reply>({
        {{"serpentine"}, [](auto &r) { stopped(r, 1); }, 1, "so the CPU received another"},
        {{"serpentine"},
         [](auto &r) { *stopped(r, 1).port_ex_err = 1; },
         3,
         "1: The reply marks the count of 0 frames"},
    });
    expect<prbs_test_reply>({{{"prbs"}, [](auto &r) { stopped(r).fail_stage = 7; }, 1, "stage 7: a port's PHY"}});
    expect<fpga_record>({
        {{"fpga", "read", "10", "8"}, [](auto &r) { r.result = 3; }, 3, "refused (log-level 1 shows which); 0 of 8 by"},
        {{"fpga", "read", "10", "8"}, [](auto &r) { r.addr = 0; }, 3, "its ADDRESS word is 0; expected 16"},
    });
    for (const auto &c :
         {std::pair{0u, "service took the request but did not answer with the expected 1052 bytes"},
          {1'500'000u, "closed the connection while the request was at work, 1 s after it began, or"}}) {
        const responder half = [=](const std::string &) { return usleep(c.first), std::string(8, '\0'); };
        EXPECT_NE(fake_service(half).run({"packet"}).err.find(c.second), std::string::npos);
    }
}

TEST(requests, stages_have_their_sentences)
{
    const std::pair<uint32_t, const char *> stages[] = {
        {4, "a port refused its speed"},
        {6, "the test's VLANs could not be set up"},
        {7, "the CPU could not send the test's frames"},
        {8, "the test's VLANs could not be removed"},
        {10, "a port's PHY loopback could not be set"},
        {11, "a port's PHY loopback could not be restored"},
    };
    for (const auto &c : stages) {
        const responder reply =
            reply_of<ess_flow_reply>(0, [&](auto &record) { stopped(record).fail_stage = c.first; });
        const finished end = fake_service(reply).run({"flow", "--json"});
        const std::string summary = "stopped at stage " + std::to_string(c.first) + ": " + c.second + "; 2 ports ";
        EXPECT_NE(end.out.find(summary), std::string::npos) << end;
        EXPECT_EQ(letters_of(end), "TT");
        EXPECT_EQ(end.code, 1);
    }
}

/* The codes of a failed test, the verdicts on its ports, and what else is said. */
TEST(requests, packet_codes_mean_what_the_end_of_the_test_makes_of_them)
{
    const struct {
        std::vector<uint32_t> codes;
        int exit_code;
        const char *verdicts, *sentence;
    } cases[] = {
        {{0, 1, 3}, 1, "PFF", "3 ports tested: 1 passed, 2 failed"},
        {{0, 0}, 1, "PP", "2 passed, 0 failed; the service still reports a failure: a port's status"},
        {{0, 2, 1, 2}, 1, "TFFF", "before anything was counted, as port 4 could not send."},
        {{0, 6, 1}, 1, "TFT", "Another port refused its settings. Before that it had no link."},
        {{7, 6}, 1, "TF", "Another port refused its settings. Before that its status could not be read."},
        {{7}, 3, "", "the test could not start, so nothing is known of 1 port (code 7 at each)"},
        {{0, 7}, 3, "PV", "port 2: Code 7 makes no sense here, so nothing can be said about this port"},
        {{3, 2}, 3, "VF", "port 1: Code 3 makes no sense here"},
        {{2, 0}, 3, "VP", "port 1: Code 2 makes no sense here"},
    };
    for (const auto &c : cases) {
        const responder reply = reply_of<packet_test_record>(0, [&](packet_test_record &record) {
            all_passed(record, static_cast<uint32_t>(c.codes.size())).result = FACMSG_PACKET_FAIL;
            for (size_t i = 0; i < c.codes.size(); i++)
                record.port_results[i] |= c.codes[i];
        });
        const finished end = fake_service(reply).run({"packet", "--json"});
        EXPECT_EQ(end.code, c.exit_code) << end;
        EXPECT_EQ(letters_of(end), c.verdicts);
        EXPECT_NE(end.out.find(c.sentence), std::string::npos) << c.sentence << "\n" << end;
    }
}

/* What a port's counters show. */
struct counters {
    uint32_t transmitted, received, damaged = 0;
};

/* The reply of a service that sent 20000 frames into a chain of ports with these counters. */
static responder chain_reply(const std::vector<counters> &ports)
{
    return reply_of<serpentine_flow_reply>(0, [=](serpentine_flow_reply &reply) {
        stopped(reply, static_cast<uint32_t>(ports.size()));
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

TEST(requests, serpentine_blames_the_port_that_is_at_fault)
{
    constexpr uint32_t ALL = 20000, SOME = 19990;
    const std::pair<std::vector<counters>, std::string> cases[] = {
        {{{ALL, ALL}, {ALL, ALL}}, "PP"}, /* only the CPU got too few */
        /* counters that stand still */
        {{{ALL, 0}, {ALL, ALL}, {ALL, ALL}}, "FPP"},
        {{{ALL, ALL}, {ALL, ALL}, {ALL, 0}}, "PPF"},
        {{{ALL, ALL}, {0, ALL}, {ALL, ALL}}, "PFP"},
        {{{ALL, ALL}, {0, 0}, {ALL, ALL}, {ALL, ALL}}, "PFPP"},
        {{{ALL, ALL}, {0, 0}, {0, 0}, {ALL, ALL}}, "PFFP"},
        {{{ALL, ALL}, {0, 0}, {0, 0}, {SOME, SOME}, {SOME, SOME}}, "PFJJP"},
        {{{ALL, ALL}, {SOME, SOME}, {SOME, SOME}, {0, 0}, {0, 0}, {SOME, SOME}}, "PFPFFP"},
        {{{ALL, 0}, {ALL, 0}, {ALL, ALL}}, "FFP"},
        {{{ALL, 0}, {0, ALL}, {ALL, ALL}}, "FFP"},
        {{{ALL, 0, 3}, {ALL, ALL}, {ALL, ALL}}, "FJP"},
        /* frames lost, or doubled, at a port and between two */
        {{{ALL, ALL}, {ALL, SOME}, {SOME, SOME}}, "PFP"},
        {{{ALL, ALL}, {SOME, SOME}, {SOME, SOME}}, "PFP"},
        {{{ALL, ALL}, {ALL, ALL + 5}, {ALL + 5, ALL + 5}}, "PFP"},
        {{{ALL, SOME}, {SOME, SOME}, {SOME - 5, SOME - 5}}, "FPF"},
        {{{ALL, SOME}, {SOME - 5, SOME - 5}, {SOME - 5, SOME - 5}}, "FFP"},
        {{{ALL, 0}, {SOME, SOME}, {SOME, SOME}}, "FJP"}, /* before or after the port that does not count */
        /* damaged frames, and a port that only counts them */
        {{{ALL, ALL, 20}, {ALL - 20, ALL - 20}, {ALL - 20, ALL - 20}}, "FPP"},
        {{{ALL, ALL, 20}, {ALL - 30, ALL - 30}, {ALL - 30, ALL - 30}}, "FFP"},
        {{{ALL, ALL, 20}, {ALL, ALL}, {ALL, ALL}}, "FJP"},
    };
    for (const auto &[ports, verdicts] : cases) {
        const finished end = fake_service(chain_reply(ports)).run({"serpentine", "--json"});
        EXPECT_EQ(letters_of(end), verdicts) << end;
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
