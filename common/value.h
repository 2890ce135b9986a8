/* SPDX-License-Identifier: MIT
 *
 * A value of a reply, a plan or a journal, whatever its type: what JSON calls a scalar, without JSON.
 */
#ifndef COMMON_VALUE_H
#define COMMON_VALUE_H

#include <compare>
#include <concepts>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <variant>

namespace common
{

/* Nothing, a truth, a number or a text. Numbers of all types compare by what they are worth; values of different kinds
 * compare as the kinds stand in the sentence before. */
class value
{
  public:
    value() = default;
    value(bool truth) : content_(truth) {}
    value(std::signed_integral auto number) : content_(int64_t{number}) {}
    value(std::unsigned_integral auto number) : content_(uint64_t{number}) {}
    value(double number) : content_(number) {}
    value(std::string text) : content_(std::move(text)) {}
    value(const char *text) : content_(std::string(text)) {}

    bool is_empty() const;
    bool is_number() const;
    bool is_text() const;
    bool is_finite() const; /* true also for what is no number */
    /* Of a number; 0 for what is none. */
    double number() const;
    /* A text as it is, a number as JSON writes it, true or false; empty for nothing. */
    std::string text() const;
    /* As JSON writes it: a text in quotes, null for nothing. */
    std::string json_text() const;

    std::partial_ordering operator<=>(const value &other) const;
    bool operator==(const value &other) const;

    nlohmann::ordered_json json() const;
    /* Nothing for lists and objects. */
    static value of(const nlohmann::json &scalar);

  private:
    std::variant<std::monostate, bool, int64_t, uint64_t, double, std::string> content_;
};

} // namespace common

#endif
