/* SPDX-License-Identifier: MIT
 *
 * A journal as it lies on the disk: text of one JSON object a line.
 */
#ifndef JOURNAL_JOURNAL_TEXT_H
#define JOURNAL_JOURNAL_TEXT_H

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace journal
{

constexpr const char *file_name = "journal.jsonl";

/* what() is the path and why. */
struct unreadable_file : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* All of a file. Throws unreadable_file. */
std::string read_text(const std::filesystem::path &file);

struct text_line {
    size_t number; /* from 1 */
    std::string_view text;
    bool complete; /* has its line end: what was written before a crash may lack it */
};

std::vector<text_line> lines_of(std::string_view text);

} // namespace journal

#endif
