/* SPDX-License-Identifier: MIT
 *
 * Files that people name: why one cannot be used, in words, and what is in it.
 */
#ifndef COMMON_FILE_H
#define COMMON_FILE_H

#include <stdexcept>
#include <string>
#include <string_view>

namespace common
{

/* A file that does not do. what() is one line: "file:line:column: what was found, what was expected", without the place
 * when the file cannot be read. */
struct file_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* What an error number says of a path, in words; kind is what it should have been, "file" or "directory". */
std::string path_fault(int error, const char *kind);

/* Why a file cannot be read; empty when it can. */
std::string read_fault(const std::string &path);

/* Why a file cannot be written or made; empty when nothing speaks against it. Makes none. */
std::string write_fault(const std::string &path);

/* What is in a regular file. Throws file_error, in which expected says what the file should have been. */
std::string read_bytes(const std::string &path, std::string_view expected);

} // namespace common

#endif
