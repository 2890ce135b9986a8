/* SPDX-License-Identifier: MIT
 *
 * The address of a Unix socket.
 */
#ifndef COMMON_SOCKET_ADDRESS_H
#define COMMON_SOCKET_ADDRESS_H

#include <string_view>
#include <sys/un.h>

namespace common
{

/* A path of at most 107 bytes; what is longer is cut off. Relative to the working directory when it is used. */
inline sockaddr_un socket_address(std::string_view path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

} // namespace common

#endif
