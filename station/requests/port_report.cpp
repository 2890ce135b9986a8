/* SPDX-License-Identifier: MIT
 *
 * What the tests of ports share.
 */
#include "port_report.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "common/words.h"
#include "facmsg.h"

namespace station
{

static constexpr std::array<choice, 6> SPEEDS{
    {{"10M", 1}, {"100M", 2}, {"1G", 3}, {"2.5G", 12}, {"5G", 13}, {"10G", 4}}};

static constexpr std::array<choice, 2> MEDIA{{{"copper", FACMSG_MEDIUM_COPPER}, {"fiber", FACMSG_MEDIUM_FIBER}}};

constinit const std::span<const choice> SPEED_NAMES{SPEEDS};
constinit const std::span<const choice> MEDIUM_NAMES{MEDIA};

/* "0, 1 or 8" */
static std::string code_list(code_table table)
{
    std::string text;
    for (size_t i = 0; i < table.size(); i++)
        text += fmt::format("{}{}", i == 0 ? "" : i + 1 == table.size() ? " or " : ", ", table[i].code);
    return text;
}

void add_check(port_outcome &port, const char *name, verdict of, const std::string &reason)
{
    port.checks.push_back({name, of, reason});
    port.verdict = worse(port.verdict, of);
    port.failed_here = port.failed_here && of != verdict::fail;
    port.reason += (port.reason.empty() || reason.empty() ? "" : " ") + reason;
}

void fail_here(port_outcome &port, const char *name, const std::string &reason)
{
    const bool only_here = is_worse(verdict::fail, port.verdict) || port.failed_here;
    add_check(port, name, verdict::fail, reason);
    port.failed_here = only_here;
}

void list_untested(port_outcome &port, const char *name)
{
    port.checks.push_back({name, verdict::not_tested});
}

void judge_code(port_outcome &port, const char *name, code_table table, uint32_t word, const char *column)
{
    const uint32_t upper = word >> 16;
    const auto row = std::ranges::find(table, word & 0xFFFF, &code_sentence::code);
    const bool detailed = row != table.end() && std::strchr(row->sentence, '{') != nullptr;
    if (row == table.end() || (upper != 0 && !detailed))
        add_check(port, name, verdict::no_verdict,
                  fmt::format("Code {} makes no sense here, so nothing can be said about this port; expected {}.", word,
                              code_list(table)));
    else if (*row->sentence != '\0')
        add_check(port, name, verdict::fail, fmt::format(fmt::runtime(row->sentence), upper));
    else
        add_check(port, name, verdict::pass);
    port.checks.back().column = column;
}

std::string find_obstacle(code_table results, uint32_t result)
{
    const auto row = std::ranges::find(results, result, &code_sentence::code);
    if (row == results.end())
        return fmt::format("the reply's result is {}; expected {}", result, code_list(results));
    return *row->sentence == '\0' ? "" : fmt::format("the test is not possible (result {}): {}", result, row->sentence);
}

std::string find_wrong_count(uint32_t port_count)
{
    if (port_count >= 1 && port_count <= FACMSG_MAX_PORTS)
        return "";
    return fmt::format("the reply counts {}; expected 1 to {}", common::counted(port_count, "port"),
                       int{FACMSG_MAX_PORTS});
}

std::string find_wrong_port(const std::vector<uint32_t> &ports, int runs)
{
    uint32_t previous = 0;
    for (size_t i = 0; i < ports.size(); i++) {
        if (ports[i] <= previous)
            runs--;
        if (ports[i] == 0 || ports[i] > FACMSG_MAX_PORTS || runs == 0)
            return fmt::format("entry {} of the reply names port {}; expected ascending ports from 1 to {}", i + 1,
                               ports[i], int{FACMSG_MAX_PORTS});
        previous = ports[i];
    }
    return "";
}

std::vector<uint32_t> ports_of_words(const uint32_t *words, uint32_t count)
{
    std::vector<uint32_t> ports;
    for (const uint32_t word : std::span(words, count))
        ports.push_back(FACMSG_RESULT_PORT(word));
    return ports;
}

std::vector<uint32_t> ports_of_bytes(const uint8_t *bytes, uint32_t count)
{
    std::vector<uint32_t> ports;
    for (const uint8_t byte : std::span(bytes, count))
        ports.push_back(byte == 0 ? 256 : byte);
    return ports;
}

static std::string summary_of(const std::vector<port_outcome> &ports)
{
    const auto count = [&](verdict of) { return std::ranges::count(ports, of, &port_outcome::verdict); };
    const auto untested = count(verdict::not_tested), unjudged = count(verdict::unjudged);
    return fmt::format("{} {}: {} passed, {} failed{}{}", common::counted(ports.size(), "port"),
                       untested ? "selected" : "tested", count(verdict::pass), count(verdict::fail),
                       unjudged ? fmt::format(", {} not judged", unjudged) : "",
                       untested ? fmt::format(", {} not tested", untested) : "");
}

void judge_unit(outcome &unit, const std::string &word, bool reported_pass, const std::string &unexplained)
{
    const auto unknown = std::ranges::find(unit.ports, verdict::no_verdict, &port_outcome::verdict);
    const bool failed = std::ranges::find(unit.ports, verdict::fail, &port_outcome::verdict) != unit.ports.end();
    const bool service_failed = std::ranges::any_of(
        unit.ports, [](const auto &port) { return port.verdict == verdict::fail && !port.failed_here; });
    unit.summary = summary_of(unit.ports);
    if (unknown != unit.ports.end()) {
        unit.summary = fmt::format("{} {}: {}", unit.row_name, unknown->port, unknown->reason);
    } else if (reported_pass && service_failed) {
        unit.summary = fmt::format("the reply contradicts itself: its {} is 0 (passed), but {}", word, unit.summary);
    } else {
        unit.verdict = reported_pass && !failed ? verdict::pass : verdict::fail;
        if (!reported_pass && !service_failed && !unexplained.empty())
            unit.summary += "; " + unexplained;
    }
}

} // namespace station
