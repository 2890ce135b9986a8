/* SPDX-License-Identifier: MIT
 *
 * The table of subcommands: one row each. A new request is a new row here and its decoder in its family's file.
 */
#include "families.h"

namespace station
{

static const command table[] = {
    /* name, help, fixed type, type, payload bytes, options, {typical s, longest s}, decoder */
    {"packet",
     "loop 500 frames through every matching port",
     true,
     FACMSG_PACKET_TEST,
     sizeof(packet_test_record),
     packet_options,
     {20, 160},
     decode_packet},
    {"log-level",
     "set the log level of the service",
     true,
     FACMSG_MSG_DEBUG,
     sizeof(debug_level_record),
     level_options,
     {1},
     decode_log_level},
    {"poe-debug",
     "set the debug level of the PoE driver",
     true,
     FACMSG_POE_DEBUG,
     sizeof(debug_level_record),
     level_options,
     {1},
     decode_poe_debug},
    {"port-debug",
     "set the debug level of the port driver",
     true,
     FACMSG_PORT_DEBUG,
     sizeof(debug_level_record),
     level_options,
     {1},
     decode_port_debug},
    {"factory-mode",
     "put the switch into factory mode",
     true,
     FACMSG_ENTER_FACTORY,
     sizeof(enter_factory_record),
     {},
     {1},
     decode_factory_mode},
    {"raw", "send any request, show the reply in hexadecimal", false, 0, 0, raw_options, {0}, decode_raw},
    {"list", "show this table", false, 0, 0, {}, {0}, nullptr},
};

std::span<const command> commands()
{
    return table;
}

} // namespace station
