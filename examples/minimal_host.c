/* SPDX-License-Identifier: MIT
 *
 * The smallest host: one switch function, the library, and a service to talk to. Run it in a folder that has a tmp/
 * folder, then send requests from the same folder:
 *
 *     mkdir -p tmp && minimal_host &
 *     facmsg-station factory-mode
 */
#include <facmsg.h>
#include <stdio.h>
#include <unistd.h>

static int set_factory_mode(void)
{
    puts("factory mode");
    fflush(stdout);
    return 0;
}

int main(void)
{
    /* Slots left out are null: the requests that need them are answered as not supported. */
    static const struct vexa_diag_drv table = {
        .set_factory_mode = set_factory_mode,
    };

    if (vexa_ssa_regitser_interface(&table) != 0) {
        fputs("minimal_host: the factory-test service did not start\n", stderr);
        return 1;
    }
    /* A real host goes on with its own work and hands received CPU frames to vexa_recv_packet(). */
    for (;;)
        pause();
}
