/* SPDX-License-Identifier: MIT
 *
 * A journal as it lies on the disk: text of one JSON object a line.
 */
#include "journal_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "common/file.h"

namespace journal
{

static unreadable_file unreadable(const std::filesystem::path &file)
{
    return unreadable_file(file.string() + ": " + common::path_fault(errno, "file"));
}

std::string read_text(const std::filesystem::path &file)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> open(std::fopen(file.c_str(), "rb"), &std::fclose);
    if (open == nullptr)
        throw unreadable(file);
    std::string text;
    char part[1 << 16];
    for (size_t size = 0; (size = std::fread(part, 1, sizeof(part), open.get())) > 0;)
        text.append(part, size);
    if (std::ferror(open.get()) != 0)
        throw unreadable(file);
    return text;
}

std::vector<text_line> lines_of(std::string_view text)
{
    std::vector<text_line> lines;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        lines.push_back({lines.size() + 1, text.substr(0, end), end != std::string_view::npos});
        text.remove_prefix(std::min(text.size(), lines.back().text.size() + 1));
    }
    return lines;
}

} // namespace journal
