/* SPDX-License-Identifier: MIT */
#include "value.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>

namespace common
{

template <class Type> constexpr bool IS_WHOLE = std::is_same_v<Type, int64_t> || std::is_same_v<Type, uint64_t>;
template <class Type> constexpr bool IS_NUMBER = IS_WHOLE<Type> || std::is_same_v<Type, double>;

/* Of the alternative with this index. */
static int kind_of(size_t index)
{
    constexpr int KINDS[] = {0, 1, 2, 2, 2, 3}; /* nothing, truth, number, text */
    return KINDS[index];
}

bool value::is_empty() const
{
    return content_.index() == 0;
}

bool value::is_number() const
{
    return kind_of(content_.index()) == 2;
}

bool value::is_text() const
{
    return std::holds_alternative<std::string>(content_);
}

bool value::is_finite() const
{
    const auto *number = std::get_if<double>(&content_);
    return number == nullptr || std::isfinite(*number);
}

double value::number() const
{
    return std::visit(
        [](const auto &content) {
            if constexpr (IS_NUMBER<std::decay_t<decltype(content)>>)
                return static_cast<double>(content);
            else
                return 0.0;
        },
        content_);
}

std::string value::text() const
{
    return is_text() ? std::get<std::string>(content_) : is_empty() ? "" : json_text();
}

std::string value::json_text() const
{
    return json().dump();
}

std::partial_ordering value::operator<=>(const value &other) const
{
    return std::visit(
        [&](const auto &one, const auto &two) -> std::partial_ordering {
            using first = std::decay_t<decltype(one)>;
            using second = std::decay_t<decltype(two)>;
            if constexpr (IS_WHOLE<first> && IS_WHOLE<second>)
                return std::cmp_less(one, two)    ? std::partial_ordering::less
                       : std::cmp_equal(one, two) ? std::partial_ordering::equivalent
                                                  : std::partial_ordering::greater;
            else if constexpr (IS_NUMBER<first> && IS_NUMBER<second>)
                return static_cast<double>(one) <=> static_cast<double>(two);
            else if constexpr (std::is_same_v<first, second>)
                return one <=> two;
            else
                return kind_of(content_.index()) <=> kind_of(other.content_.index());
        },
        content_, other.content_);
}

bool value::operator==(const value &other) const
{
    return (*this <=> other) == 0;
}

nlohmann::ordered_json value::json() const
{
    return std::visit(
        [](const auto &content) -> nlohmann::ordered_json {
            if constexpr (std::is_same_v<std::decay_t<decltype(content)>, std::monostate>)
                return nullptr;
            else
                return content;
        },
        content_);
}

value value::of(const nlohmann::json &scalar)
{
    switch (scalar.type()) {
    case nlohmann::json::value_t::boolean:
        return scalar.get<bool>();
    case nlohmann::json::value_t::number_integer:
        return scalar.get<int64_t>();
    case nlohmann::json::value_t::number_unsigned:
        return scalar.get<uint64_t>();
    case nlohmann::json::value_t::number_float:
        return scalar.get<double>();
    case nlohmann::json::value_t::string:
        return scalar.get<std::string>();
    default:
        return {};
    }
}

} // namespace common
