/* SPDX-License-Identifier: MIT
 *
 * The table of subcommands: one row each. A new request is a new row here and its decoder in its family's file.
 */
#include <algorithm>

#include "families.h"

namespace station
{

/* One request of a type, whose payload and reply are a Record. */
template <class Record> static command one(const char *name, const char *help, uint32_t type,
                                           std::span<const option> options, duration expected, decoder *decode)
{
    return {name, help, type, sizeof(Record), options, expected, decode};
}

static command fpga(const char *name, const char *help, uint32_t type, std::span<const option> options,
                    outcome (*transfer)(const request &, const sender &))
{
    return {name, help, type, sizeof(fpga_record), options, {0}, nullptr, transfer};
}

static command asking(const char *question, command row)
{
    row.question = question;
    return row;
}

std::span<const command> commands()
{
    /* name, help, type, options, {typical s, longest s}, decoder */
    static const command table[] = {
        one<packet_test_record>("packet", "loop 500 frames through every matching port", FACMSG_PACKET_TEST,
                                PACKET_OPTIONS, {20, 160}, decode_packet),
        one<switch_test_record>("switch-speed", "set the speed of the 1G/10G ports", FACMSG_1G_10G_SWITCH,
                                SWITCH_SPEED_OPTIONS, {1}, decode_switch_speed),
        one<switch_test_record>("switch-40g", "no service supports this", FACMSG_10G_40G_SWITCH, UNIT_OPTIONS, {1},
                                decode_unsupported),
        one<switch_test_record>("fc-report", "list the FC/Ethernet ports", FACMSG_FC_ETHER_SWITCH, UNIT_OPTIONS, {1},
                                decode_fc_report),
        one<switch_test_record>("switch-medium", "change the medium of the combo ports over",
                                FACMSG_COPPER_FIBER_SWITCH, UNIT_OPTIONS, {5}, decode_switch_medium),
        one<broadcast_test_record>("broadcast", "flood a burst, then count every port's FCS errors",
                                   FACMSG_PORT_BROADCAST, BROADCAST_OPTIONS, {14}, decode_broadcast),
        one<poe_test_reply>("poe", "state, class, overload and switch-off of the PoE ports", FACMSG_PORT_POE,
                            POE_OPTIONS, {26, 1070}, decode_poe),
        one<debug_level_record>("log-level", "set the log level of the service", FACMSG_MSG_DEBUG, LEVEL_OPTIONS, {1},
                                decode_level),
        one<debug_level_record>("poe-debug", "set the debug level of the PoE driver", FACMSG_POE_DEBUG, LEVEL_OPTIONS,
                                {1}, decode_level),
        one<debug_level_record>("port-debug", "set the debug level of the port driver", FACMSG_PORT_DEBUG,
                                LEVEL_OPTIONS, {1}, decode_level),
        one<enter_factory_record>("factory-mode", "put the switch into factory mode", FACMSG_ENTER_FACTORY, {}, {1},
                                  decode_factory_mode),
        fpga("fpga write", "write data to the FPGA", FACMSG_FPGA_WRITE, FPGA_WRITE_OPTIONS, write_fpga),
        fpga("fpga read", "read data from the FPGA", FACMSG_FPGA_READ, FPGA_READ_OPTIONS, read_fpga),
        one<poe_test_reply>("hpoe", "the PoE test of the high-power, then of the PoE ports", FACMSG_PORT_HPOE,
                            POE_OPTIONS, {52, 1100}, decode_poe),
        one<poe_test_reply>("box-hpoe", "the PoE test of the high-power ports in a test box", FACMSG_PBOX_HPOE,
                            POE_OPTIONS, {31, 1080}, decode_poe),
        asking("Upgrade the firmware of the PoE controller? The service does nothing else meanwhile.",
               one<poe_mcu_upgrade_reply>("poe-upgrade", "upgrade the firmware of the PoE controller",
                                          FACMSG_POE_MCU_UPGRADE, POE_UPGRADE_OPTIONS, {0}, decode_poe_upgrade)),
        one<poe_mcu_ver_reply>("poe-version", "show the firmware versions of the PoE controller",
                               FACMSG_POE_MCU_VERSION, {}, {1}, decode_poe_version),
        one<vop_test_reply>("vop", "VOP measurement of the PoE ports, output off", FACMSG_POE_VOP, VOP_OPTIONS,
                            {82, 166}, decode_vop),
        one<packet_test_record>("box-packet", "the packet test of the high-power ports in a test box",
                                FACMSG_PBOX_PACKET_TEST, PACKET_OPTIONS, {20, 160}, decode_packet),
        one<ess_flow_reply>("flow", "traffic stress in port pairs", FACMSG_ESS_FLOW, STRESS_OPTIONS, {42, 430},
                            decode_flow),
        one<ess_flow_reply>("broadcast-flow", "traffic stress by broadcast", FACMSG_ESS_BC_FLOW, STRESS_OPTIONS,
                            {42, 470}, decode_flow),
        one<serpentine_flow_reply>("serpentine", "traffic stress through a chain of all ports", FACMSG_ESS_SERPENTINE,
                                   STRESS_OPTIONS, {43, 430}, decode_serpentine),
        one<prbs_test_reply>("prbs", "PRBS run of the fiber ports", FACMSG_ESS_SFI_PRBS, PRBS_OPTIONS, {70, 170},
                             decode_prbs),
        {"raw", "send any request, show the reply in hexadecimal", {}, 0, RAW_OPTIONS, {0}, decode_raw},
        {"list", "show this table", {}, 0, {}, {0}, nullptr},
    };
    return table;
}

bool may_share(const command &row)
{
    constexpr uint32_t reads_or_logs[] = {FACMSG_FC_ETHER_SWITCH, FACMSG_MSG_DEBUG, FACMSG_POE_DEBUG,
                                          FACMSG_PORT_DEBUG,      FACMSG_FPGA_READ, FACMSG_POE_MCU_VERSION};
    return row.type && std::ranges::find(reads_or_logs, *row.type) != std::end(reads_or_logs);
}

std::span<const option> waiting_options()
{
    static constexpr option table[] = {
        {.name = "--timeout",
         .help = "seconds to wait for the reply, from when the service begins; as long as it takes if not given",
         .least = 1,
         .most = 86400,
         .set = set_own_number},
        BUSY_TIMEOUT_OPTION,
        {.name = "--wait",
         .help = "wait for another station that is at this service",
         .values = arity::flag,
         .set = set_own},
    };
    return table;
}

} // namespace station
