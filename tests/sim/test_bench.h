/* SPDX-License-Identifier: MIT
 *
 * A board from a few lines of text, for one test.
 */
#ifndef TESTS_SIM_TEST_BENCH_H
#define TESTS_SIM_TEST_BENCH_H

#include <map>
#include <memory>
#include <string>

#include "sim/board_file/board_file.h"
#include "sim/model/board.h"

constexpr sim::mac_address CPU_MAC = {0, 0, 0, 0, 0, 1};
constexpr uint64_t MS = 1000;

/* Four 1G ports whose links take 300 ms, just switched on: 1 and 2 share a cable, 3 has a plug, 4 nothing. */
inline const std::string FOUR_PORTS = R"(
boot_ms = 0
cables = [[1, 2]]
plugs = 3
[[ports]]
ports = "1-4"
copper_speeds = ["10M", "100M", "1G"]
)";

inline std::string fault(const std::string &kind, uint32_t port, const std::string &more = "")
{
    return "[[faults]]\nkind = \"" + kind + "\"\nports = " + std::to_string(port) + "\n" + more + "\n";
}

/* For runners whose frames nobody looks at. */
inline void ignore(const pack_info *, const uint8_t *, uint32_t) {}

struct test_bench {
    explicit test_bench(const std::string &faults = "")
        : board(std::make_unique<sim::board>(sim::parse_board(FOUR_PORTS + faults, "bench.toml")))
    {
        board->fabric.add_cpu_mac(CPU_MAC);
    }

    sim::port &port(uint32_t number)
    {
        return *board->find_port(number);
    }

    void pass_ms(uint64_t duration)
    {
        board->clock.run_until(board->clock.now() + duration * MS);
    }

    void send(uint32_t number, size_t frames, sim::mac_address to = CPU_MAC)
    {
        std::vector<uint8_t> bytes(128);
        std::copy(to.begin(), to.end(), bytes.begin());
        for (size_t i = 0; i < frames; i++)
            board->transmit(port(number), bytes);
    }

    /* Frames that reached the CPU since the last call, by the phy id that came with them. */
    std::map<uint32_t, size_t> received()
    {
        std::map<uint32_t, size_t> counts;
        for (const auto &f : board->cpu.take_frames())
            counts[f.info.phy_id]++;
        return counts;
    }

    std::unique_ptr<sim::board> board;
};

#endif
