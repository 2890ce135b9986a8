/* SPDX-License-Identifier: MIT
 *
 * The driver table and its registration, which starts the service.
 */
#include <cstddef>
#include <cstring>

#include "facmsg_internal.h"
#include "facmsg_slots.h"
#include "server_lib.h"

#define AT_ITS_INDEX(index, name, port) static_assert(offsetof(vexa_diag_drv, name) == (index) * sizeof(void *));
FACMSG_SLOTS(AT_ITS_INDEX)
static_assert(sizeof(vexa_diag_drv) == FACMSG_DRV_SLOTS * sizeof(void *));

/* Packed for the host's sake; here it lies aligned, so that a slot can be read and written whole while the server runs.
 */
alignas(void *) vexa_diag_drv facmsg_vexa_diag_drv;

static bool facmsg_server_started;

/* Any slot, whatever the type of its function. */
typedef vexa_reserved_slot any_slot __attribute__((may_alias));

static any_slot &library_slot(size_t index)
{
    return reinterpret_cast<any_slot *>(&facmsg_vexa_diag_drv)[index];
}

/* The caller's table may lie at any address. */
static vexa_reserved_slot caller_slot(const vexa_diag_drv *table, size_t index)
{
    vexa_reserved_slot function;
    memcpy(&function, reinterpret_cast<const uint8_t *>(table) + index * sizeof(function), sizeof(function));
    return function;
}

static int start_server()
{
    if (facmsg_server_started)
        return 0;
    memset(static_cast<void *>(&facmsg_vexa_diag_drv), 0, sizeof(facmsg_vexa_diag_drv));
    if (facmsg_server_init() != 0)
        return -1;
    facmsg_server_started = true;
    return 0;
}

int vexa_ssa_regitser_interface(const vexa_diag_drv *table)
{
    if (table == nullptr) {
        log_error("Invalid vexa diag drv.\n");
        return -1;
    }
    if (start_server() != 0) {
        log_error("Factory server init fail.\n");
        return -1;
    }
    for (size_t index = 0; index < FACMSG_DRV_SLOTS; index++) {
        any_slot function = caller_slot(table, index);
        if (function == nullptr)
            continue;
        if (__atomic_load_n(&library_slot(index), __ATOMIC_RELAXED) == nullptr)
            __atomic_store(&library_slot(index), &function, __ATOMIC_RELEASE);
        else
            log_error("this interface has been mounted, offset:%d\r\n", static_cast<int>(index));
    }
    return 0;
}

int vexa_tx_packet_init(int (*send_packet)(const pack_info *info, const uint8_t *frame, uint32_t length))
{
    vexa_diag_drv table = {};
    table.send_packet = send_packet;
    return vexa_ssa_regitser_interface(&table);
}
