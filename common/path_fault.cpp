/* SPDX-License-Identifier: MIT
 *
 * Why a path cannot be used, in words.
 */
#include "path_fault.h"

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace common
{

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

static std::string fault(const std::string &path, int wanted)
{
    std::error_code unknown;
    if (fs::is_directory(path, unknown))
        return "is a directory";
    return access(path.c_str(), wanted) == 0 ? "" : path_fault(errno, "file");
}

std::string read_fault(const std::string &path)
{
    return fault(path, R_OK);
}

std::string write_fault(const std::string &path)
{
    std::error_code unknown;
    if (fs::exists(path, unknown))
        return fault(path, W_OK);
    const fs::path folder = fs::absolute(path, unknown).parent_path();
    if (!fs::is_directory(folder, unknown))
        return "no such directory";
    return access(folder.c_str(), W_OK) == 0 ? "" : path_fault(errno, "file");
}

} // namespace common
