/* SPDX-License-Identifier: MIT
 *
 * The version of the library and the programs, which are released together.
 */
#ifndef COMMON_VERSION_H
#define COMMON_VERSION_H

namespace common
{

/* As in "0.1.0". */
const char *version();

} // namespace common

#endif
