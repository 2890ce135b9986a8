/* SPDX-License-Identifier: MIT
 *
 * The version of the library and the programs.
 */
#include "version.h"

namespace text
{

const char *version()
{
    return FACMSG_VERSION;
}

} // namespace text
