/* SPDX-License-Identifier: MIT */
#include "report_parts.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace reports
{

using common::check;
using common::verdict;
using journal::attempt;

constexpr const char *REST_OF_PLAN = "the rest of the plan";

const char *word_of(port_state state)
{
    switch (state) {
    case port_state::failed:
        return word_of(verdict::fail);
    case port_state::retried:
        return word_of(verdict::retried);
    case port_state::passed_so_far:
        return "PASSED SO FAR";
    case port_state::passed:
        return word_of(verdict::pass);
    case port_state::unknown:
        break;
    }
    return word_of(verdict::none);
}

/* The worst that an attempt says of each port. */
using worst_checks = std::map<std::string, const check *>;

static worst_checks worst_checks_of(const attempt &step)
{
    worst_checks worst;
    for (const check &entry : step.checks)
        if (!is_measurement(entry) && entry.where.port > 0) {
            const check *&row = worst[entry.where.id];
            if (row == nullptr || journal::prevailing(row->verdict, entry.verdict) != row->verdict)
                row = &entry;
        }
    return worst;
}

static bool has_reply(const attempt &step)
{
    return step.verdict != verdict::not_run && step.verdict != verdict::no_verdict &&
           step.verdict != verdict::incomplete;
}

/* Of an attempt that failed without naming a port of the panel: where; null for other attempts. */
static const char *unnamed_failure(const attempt &step, const worst_checks &worst)
{
    if (step.verdict != verdict::fail || !worst.empty() || !step.covers.empty() || !step.judges_ports)
        return nullptr;
    const bool at_position = std::ranges::any_of(
        step.checks, [](const check &entry) { return entry.verdict == verdict::fail && entry.where.id != "unit"; });
    return at_position ? "at a position that nobody can name" : "as a whole";
}

/* What a port owes to the steps so far. */
struct port_account {
    port_finding finding;
    std::vector<std::string> passed = {};
};

static std::string sentence_on(const attempt &step, const check &entry)
{
    return fmt::format("{}, {}: {}", step.step, entry.name,
                       entry.sentence.empty() ? word_of(entry.verdict) : entry.sentence);
}

/* worst is null when the attempt says nothing of the port. */
static void add_worst(port_account &port, const attempt &step, size_t order, const check *worst)
{
    const verdict own = worst == nullptr ? verdict::none : worst->verdict;
    const bool worse = own == verdict::fail || (own == verdict::retried && port.finding.state == port_state::unknown);
    if (worse && port.finding.state != port_state::failed) {
        port.finding.state = own == verdict::fail ? port_state::failed : port_state::retried;
        port.finding.sentence = sentence_on(step, *worst);
    }
    if (!step.is_last || own == verdict::fail)
        return;
    const bool covered = std::ranges::find(step.covers, port.finding.port.port) != step.covers.end();
    const bool any = step.covers.empty() && step.judges_ports && !has_reply(step);
    const bool is_named = own == verdict::pass || own == verdict::not_tested;
    if (own == verdict::pass && has_reply(step))
        port.passed.push_back(step.step);
    else if (is_named || covered || any)
        port.finding.missing.push_back({step.step, has_reply(step) ? verdict::not_tested : step.verdict, order});
}

static void add(std::vector<port_account> &accounts, const attempt &step, size_t order)
{
    const worst_checks worst = worst_checks_of(step);
    const char *unnamed = step.is_last ? unnamed_failure(step, worst) : nullptr;
    for (port_account &port : accounts) {
        const auto row = worst.find(port.finding.port.id);
        if (unnamed != nullptr)
            port.finding.missing.push_back({step.step, step.verdict, order, unnamed});
        else
            add_worst(port, step, order, row == worst.end() ? nullptr : row->second);
    }
}

static std::string missing_text(const std::vector<missing_step> &missing)
{
    std::string text;
    for (const missing_step &one : missing)
        text += fmt::format("{}{} ({}{}{})", text.empty() ? "Missing: " : ", ", one.step, word_of(one.why),
                            *one.detail == '\0' ? "" : " ", one.detail);
    return text.empty() ? "" : text + ".";
}

static std::string list_text(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

static port_finding conclusion_of(port_account port)
{
    port_finding &finding = port.finding;
    const std::string missing = missing_text(finding.missing);
    if (finding.state == port_state::retried)
        finding.sentence += missing.empty() ? "" : " " + missing;
    if (finding.state != port_state::unknown)
        return finding;
    if (port.passed.empty()) {
        finding.sentence = missing.empty() ? "No step judges it." : missing;
    } else if (finding.missing.empty()) {
        finding.state = port_state::passed;
        finding.sentence = "Passed all that the plan asks of it.";
    } else {
        finding.state = port_state::passed_so_far;
        finding.sentence = fmt::format("Passed {}. {}", list_text(port.passed), missing);
    }
    return finding;
}

std::vector<port_finding> ports_of(const journal::run_record &run)
{
    std::vector<port_account> accounts;
    for (const common::place &port : run.ports)
        accounts.push_back({{port}});
    for (size_t order = 0; order < run.attempts.size(); order++)
        add(accounts, run.attempts[order], order);
    std::vector<port_finding> ports;
    for (port_account &port : accounts) {
        if (run.result == common::run_result::incomplete)
            port.finding.missing.push_back({REST_OF_PLAN, verdict::incomplete, run.attempts.size()});
        ports.push_back(conclusion_of(std::move(port)));
    }
    return ports;
}

/* "1-12, 14" of ascending numbers. */
static std::string ranges_text(const std::vector<int> &numbers)
{
    std::string text;
    for (size_t i = 0; i < numbers.size();) {
        size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1)
            end++;
        text += (text.empty() ? "" : ", ") + std::to_string(numbers[i]);
        if (end > i + 1)
            text += "-" + std::to_string(numbers[end - 1]);
        i = end;
    }
    return text;
}

std::vector<missing_ports> missing_in(const std::vector<port_finding> &ports)
{
    std::vector<std::pair<missing_step, std::vector<int>>> rows;
    for (const port_finding &port : ports)
        for (const missing_step &one : port.missing) {
            if (port.state == port_state::failed)
                continue;
            auto row = std::ranges::find_if(
                rows, [&](const auto &entry) { return entry.first.order == one.order && entry.first.why == one.why; });
            if (row == rows.end())
                row = rows.insert(rows.end(), {one, {}});
            row->second.push_back(port.port.port);
        }
    std::ranges::stable_sort(rows, {}, [](const auto &entry) { return entry.first.order; });
    std::vector<missing_ports> lines;
    lines.reserve(rows.size());
    for (const auto &[missing, numbers] : rows)
        lines.push_back({missing, numbers.size() == ports.size() ? "all ports"
                                  : numbers.size() == 1          ? "port " + ranges_text(numbers)
                                                                 : "ports " + ranges_text(numbers)});
    return lines;
}

} // namespace reports
