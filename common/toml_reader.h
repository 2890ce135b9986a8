/* SPDX-License-Identifier: MIT
 *
 * Reads checked values out of a TOML table. Whatever is wrong ends in a file_error that says where, what was found and
 * what was expected.
 */
#ifndef COMMON_TOML_READER_H
#define COMMON_TOML_READER_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <toml++/toml.h>

#include "file.h"

namespace common
{

/* The table in a file, or in a text whose path stands in messages. expected says what the file should have been. Both
 * throw file_error. */
toml::table read_toml(const std::string &path, std::string_view expected);
toml::table parse_toml(std::string_view text, const std::string &path);

/* A value as the file shows it. */
std::string literal(const toml::node &node);

/* The lowest and highest number that a key takes. */
struct number_range {
    int64_t lowest;
    int64_t highest;
};
constexpr number_range ANY_WORD = {0, UINT32_MAX};

/* A table that is read key by key. Every function throws file_error when the value of its key is not what it reads.
 * The table and the file's name must outlive the reader. */
class toml_reader
{
  public:
    /* Refuses keys of the table that are not among these. */
    toml_reader(const std::string &file, const toml::table &table, const std::vector<std::string_view> &keys);

    bool has(std::string_view key) const;
    bool is_text(std::string_view key) const;

    /* The value of a key; nothing, or the fallback, when the key is not there. */
    std::optional<int64_t> number(std::string_view key, number_range range) const;
    uint32_t word(std::string_view key, number_range range, uint32_t fallback) const;
    bool flag(std::string_view key, bool fallback) const;
    std::optional<std::string> text(std::string_view key) const;
    std::optional<std::string> one_of(std::string_view key, const std::vector<std::string_view> &names) const;
    std::vector<std::string> some_of(std::string_view key, const std::vector<std::string_view> &names) const;

    /* Ports from 1 to the highest: a number or a string such as "1-4,7". Empty when the key is not there. */
    std::vector<uint32_t> ports(std::string_view key, uint32_t highest) const;
    /* The same, where no port may be named twice. */
    std::vector<uint32_t> distinct_ports(std::string_view key, uint32_t highest) const;

    /* The table of a key; not called when the key is not there. */
    void for_table(std::string_view key, const std::function<void(const toml::table &)> &use) const;

    /* The entries of an array of tables, and of an array of pairs of ports; none when the key is not there. */
    void for_each_table(std::string_view key, const std::function<void(const toml::table &)> &use) const;
    void for_each_pair(std::string_view key, uint32_t highest,
                       const std::function<void(uint32_t, uint32_t)> &use) const;

    /* Complains about a key's value, or about the whole table when the key is not there. */
    [[noreturn]] void fail(std::string_view key, const std::string &message) const;
    /* Complains about a value anywhere in the file. */
    [[noreturn]] void fail_at(const toml::node &node, const std::string &message) const;

  private:
    const toml::array *array(std::string_view key, std::string_view expected) const;
    std::string name_from(const toml::node &node, std::string_view key,
                          const std::vector<std::string_view> &names) const;
    uint32_t port_from(const toml::node &node, uint32_t highest) const;

    const std::string &file_;
    const toml::table &table_;
};

} // namespace common

#endif
