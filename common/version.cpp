/* SPDX-License-Identifier: MIT
 *
 * The version of the library and the programs.
 */
#include "version.h"

namespace common
{

const char *version()
{
    return FACMSG_VERSION;
}

} // namespace common
