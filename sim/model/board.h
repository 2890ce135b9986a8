/* SPDX-License-Identifier: MIT
 *
 * The simulated switch: ports, wires, fabric and CPU on one clock. For one thread at a time; a live_board sees to that.
 */
#ifndef SIM_BOARD_H
#define SIM_BOARD_H

#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "board_config.h"
#include "cpu.h"
#include "event_clock.h"
#include "fabric.h"
#include "fpga.h"
#include "poe.h"
#include "port.h"
#include "wire.h"

namespace sim
{

class board
{
  public:
    /* Powers up the board and lets its boot time pass. */
    explicit board(board_config config);
    board(const board &) = delete;
    board &operator=(const board &) = delete;

    const board_config &config() const
    {
        return config_;
    }

    /* A port by number, by phy id; null when there is none. */
    port *find_port(uint32_t number);
    port *find_phy(uint32_t phy_id);

    /* A change of mode or of the switch restarts the link; set_status is false when the port cannot do the setting.
     */
    bool set_status(port &target, const port_status_row &setting);
    void switch_port(port &target, bool on);
    void loop_phy(port &target, bool looped);

    /* Whether a bit sequence comes in on a port that checks one: from itself, or from a far end that sends one too. */
    bool prbs_locked(const port &checker) const;

    /* Sends a frame from the CPU out of a port. A port without link takes it and loses it, as hardware does. */
    void transmit(port &out, std::span<const uint8_t> bytes);

  private:
    port_set with_room_; /* ports that take another frame to send */

  public:
    event_clock clock;
    sim::cpu cpu;
    sim::fabric fabric;
    sim::fpga fpga;
    poe_controller poe;
    bool factory_mode = false;
    int32_t port_debug_level = 0;
    int32_t poe_debug_level = 0;

  private:
    wire_rate rate() const;
    void add_wire(wire::kind material, port &end_a, port &end_b, wire::arrival arrive);
    void connect(port &front);
    void connect_fpga(port &facing);
    void restart_link(const port &target);

    const board_config config_;
    std::map<uint32_t, port> ports_; /* by number */
    std::unordered_map<uint32_t, port *> by_phy_;
    std::vector<std::unique_ptr<wire>> wires_;
    std::map<const port *, std::vector<wire *>> wires_of_;
};

} // namespace sim

#endif
