/* SPDX-License-Identifier: MIT
 *
 * Why a path cannot be used, in words.
 */
#ifndef COMMON_PATH_FAULT_H
#define COMMON_PATH_FAULT_H

#include <string>

namespace common
{

/* Why a path did not do, in words; kind is what it should have been, a file or a directory. */
std::string path_fault(int error, const char *kind);

/* Why a file cannot be read; empty when it can. */
std::string read_fault(const std::string &path);

/* Why a file cannot be written or made; empty when nothing speaks against it. Makes none. */
std::string write_fault(const std::string &path);

} // namespace common

#endif
