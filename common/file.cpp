/* SPDX-License-Identifier: MIT */
#include "file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <unistd.h>

#include <fmt/format.h>

namespace fs = std::filesystem;

namespace common
{

/* mode is R_OK or W_OK. */
static std::string access_fault(const std::string &path, int mode)
{
    std::error_code unknown;
    if (fs::is_directory(path, unknown))
        return "is a directory";
    return access(path.c_str(), mode) == 0 ? "" : path_fault(errno, "file");
}

std::string path_fault(int error, const char *kind)
{
    switch (error) {
    case ENOENT:
        return fmt::format("no such {}", kind);
    case ENOTDIR:
        return "a part of the path is no directory";
    case EISDIR:
        return "is a directory";
    case EACCES:
        return "permission denied";
    default:
        return std::generic_category().message(error);
    }
}

std::string read_fault(const std::string &path)
{
    return access_fault(path, R_OK);
}

std::string write_fault(const std::string &path)
{
    std::error_code unknown;
    if (fs::exists(path, unknown))
        return access_fault(path, W_OK);
    const fs::path folder = fs::absolute(path, unknown).parent_path();
    if (!fs::is_directory(folder, unknown))
        return "no such directory";
    return access(folder.c_str(), W_OK) == 0 ? "" : path_fault(errno, "file");
}

std::string read_bytes(const std::string &path, std::string_view expected)
{
    if (const std::string fault = read_fault(path); !fault.empty())
        throw file_error(fmt::format("{}: {}, expected {}", path, fault, expected));
    if (!fs::is_regular_file(path))
        throw file_error(fmt::format("{}: is no regular file, expected {}", path, expected));
    errno = 0;
    std::ifstream file(path);
    std::ostringstream bytes;
    if (file.is_open() && (file.peek() == EOF ? !file.bad() : bool(bytes << file.rdbuf())))
        return bytes.str();
    throw file_error(
        fmt::format("{}: {}, expected {}", path, std::generic_category().message(errno == 0 ? EIO : errno), expected));
}

} // namespace common
