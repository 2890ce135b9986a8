/* SPDX-License-Identifier: MIT
 *
 * facmsg: the factory-test service of a managed Ethernet switch, as a library inside the switch's main process.
 *
 * The host registers its driver functions once; the library then serves factory-test requests on a local Unix socket
 * from a thread of its own until the process ends. The host also hands it every frame that the CPU receives. Test tools
 * in other processes use facmsg_client_send().
 *
 * Functions return 0 for success and -1 for failure unless said otherwise.
 */
#ifndef FACMSG_H
#define FACMSG_H

#include "facmsg_driver.h"
#include "facmsg_protocol.h"

#define FACMSG_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The host's side ---- */

/* Registers driver functions and, the first time it succeeds, starts the service.
 *
 * Every filled slot of *table is copied into the library's own table where that slot is still empty; a slot that is
 * filled there already keeps its first function, and an error line names it. So several callers may each bring a part.
 * There is no way to replace or remove a function, nor to stop the service. The table is only read during the call and
 * may lie at any address.
 *
 * Returns -1 when table is null, or when the server thread cannot be started; a later call tries again.
 * Call it from the host's start-up, from one thread at a time. */
FACMSG_API int vexa_ssa_regitser_interface(const struct vexa_diag_drv *table);

/* Registers a table that holds the host's frame-transmit function alone (slot send_packet); otherwise the same. */
FACMSG_API int vexa_tx_packet_init(int (*send_packet)(const struct pack_info *info, const uint8_t *frame,
                                                      uint32_t length));

/* The library's own table, for looking at. It only ever grows; only registration writes it. */
FACMSG_API extern struct vexa_diag_drv facmsg_vexa_diag_drv;

/* To be called for every frame that the CPU receives, with the receiving port's phy id in *info and the frame from its
 * destination MAC on. Counts test frames per port and keeps the latest FPGA reply; ignores everything else, and also
 * a null info and frames too short to have a type. Does not keep the pointers, allocate, lock or log.
 * May be called from any number of threads at once. */
FACMSG_API void vexa_recv_packet(const struct pack_info *info, const uint8_t *frame, uint32_t length);

/* Writes the number of test frames counted for a port since load to *count; 0 for a port that never received one.
 * Test frames have the type F0 F0 or 89 06. At most 256 ports are counted for the life of the process; further ones
 * read 0. Counts wrap at 2^32 and are never reset: take differences. Always returns 0. Any thread. */
FACMSG_API int vexa_get_recv_packet_number(uint32_t phy_id, uint32_t *count);

/* The latest FPGA reply frame: 128 bytes, zero behind the frame's end, and all zero from an FPGA request until its
 * reply. Lives as long as the process. The receiving thread may overwrite it at any time. */
FACMSG_API uint8_t *get_fpga_data(void);

/* The log level, 0 at load: above 0 error lines go to standard output, above 1 trace lines as well. The host may read
 * and write it at any time (as one 32-bit access); request FACMSG_MSG_DEBUG sets it. */
FACMSG_API extern int32_t facmsg_dbg;

/* ---- Both sides of the exchange ---- */

/* Writes one frame to a connected socket in one piece. payload may be null only when payload_size is 0; it stays the
 * caller's. Returns -1 when the frame could not be written whole; a peer that has gone raises no signal. Any thread. */
FACMSG_API int facmsg_send(int fd, uint32_t type, uint32_t payload_size, const void *payload);

/* Sends one request to the service and waits for the reply of the same size, which replaces the payload.
 *
 * attempts says how often to try reading, 100 ms before each; a try blocks until the service answers or closes the
 * connection, so 1 is enough for a service that is alive, however long its test takes. The reply's type is not
 * examined, and of a longer one only the first payload_size bytes are taken: send each record at its reply's size.
 * Returns -1 when the service cannot be reached, or sends no reply or a shorter one, and without an attempt; payload is
 * then untouched. Must run in the service's working directory. Any thread. */
FACMSG_API int facmsg_client_send(uint32_t type, uint32_t payload_size, void *payload, int attempts);

/* ---- Request handlers ---- */

/* Each takes a connected socket and a request in a buffer of FACMSG_BUFFER_SIZE bytes, runs it, writes the reply over
 * the request's payload and sends it. They return what facmsg_send() returns. The service calls them on its own thread;
 * a direct call must not overlap a request. */

/* Runs the handler for request->header.srv_type, or answers FACMSG_REPLY_UNKNOWN. Returns -1, sending nothing, when
 * request is null. */
FACMSG_API int facmsg_lib_test_main(int fd, struct facmsg_request *request);

FACMSG_API int facmsg_msg_debug_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_poe_debug_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_port_debug_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_enter_factory_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_packet_test_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_pbox_packet_test_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_1g_10g_switch_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_10g_40g_switch_fun(int fd, struct facmsg_request *request); /* returns 0 without a reply */
FACMSG_API int facmsg_fc_ether_switch_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_copper_fiber_switch_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_port_broadcast_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_port_poe_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_port_hpoe_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_pbox_hpoe_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_poe_mcu_upg_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_poe_mcu_ver_get_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_poe_vop_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_fpga_write_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_fpga_read_fun(int fd, struct facmsg_request *request);

FACMSG_API int facmsg_ess_flow_pressure_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_ess_bc_flow_pressure_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_ess_serpentine_flow_fun(int fd, struct facmsg_request *request);
FACMSG_API int facmsg_ess_sfi_prbs_fun(int fd, struct facmsg_request *request);

/* No request type leads here: for direct calls, with a struct flow_pressure_reply as the payload. Answers with type
 * FACMSG_FLOW_REPLY. */
FACMSG_API int facmsg_flow_pressure_fun(int fd, struct facmsg_request *request);

/* 0 at load; 1 once a stress test has set every port's PHY loopback, which the first does more thoroughly. */
FACMSG_API extern uint8_t g_first_phy_loopback;

/* ---- Helpers ---- */

/* Writes value into the first count entries of states; none when count is not above 0. */
FACMSG_API void platform_set_port_status(uint32_t *states, int count, uint32_t value);

/* ---- FPGA ----
 *
 * Access to the FPGA through request and reply frames. fpga_port is 1 or 2; product_id tells which switch ports these
 * are: 61 and 62 for FACMSG_PRODUCT_48GT, 37 and 38 for every other. Only whole 32-bit words are moved. They wait for
 * the reply, 200 ms after a write and 50 ms after a read, and must not overlap each other or a request. -1, after an
 * error line, when an argument is out of range or the request could not be sent. */
#define FACMSG_PRODUCT_48GT UINT32_C(0x4A1C0027)

/* Writes length bytes (at most 32). Done once the request is sent: the reply is not examined. */
FACMSG_API int vexa_fpga_buf_write(uint32_t fpga_port, uint32_t address, const void *data, uint32_t length,
                                   uint32_t product_id);

/* Reads length bytes (at most 100). Without a reply in time the data is zero, and the result still 0. */
FACMSG_API int vexa_fpga_buf_read(uint32_t fpga_port, uint32_t address, void *data, uint32_t length,
                                  uint32_t product_id);

/* Traces bytes in hexadecimal, 16 a line. Prints nothing unless facmsg_dbg is above 1. */
FACMSG_API void vexa_fpga_pkt_print(const void *bytes, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
