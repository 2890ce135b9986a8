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

constexpr const char *rest_of_plan = "the rest of the plan";

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
using said_of_ports = std::map<std::string, const check *>;

static said_of_ports said_in(const attempt &tried)
{
    said_of_ports said;
    for (const check &made : tried.checks)
        if (!is_measurement(made) && made.where.port > 0) {
            const check *&known = said[made.where.id];
            if (known == nullptr || journal::prevailing(known->verdict, made.verdict) != known->verdict)
                known = &made;
        }
    return said;
}

static bool has_reply(const attempt &tried)
{
    return tried.verdict != verdict::not_run && tried.verdict != verdict::no_verdict &&
           tried.verdict != verdict::incomplete;
}

/* Of an attempt that failed without naming a port of the panel: where; null for other attempts. */
static const char *unnamed_failure(const attempt &tried, const said_of_ports &said)
{
    if (tried.verdict != verdict::fail || !said.empty() || !tried.covers.empty() || !tried.judges_ports)
        return nullptr;
    const bool at_position = std::ranges::any_of(
        tried.checks, [](const check &made) { return made.verdict == verdict::fail && made.where.id != "unit"; });
    return at_position ? "at a position that nobody can name" : "as a whole";
}

/* What a port owes to the steps so far. */
struct port_account {
    port_finding found;
    std::vector<std::string> passed = {};
};

static std::string sentence_on(const attempt &tried, const check &made)
{
    return fmt::format("{}, {}: {}", tried.step, made.name,
                       made.sentence.empty() ? word_of(made.verdict) : made.sentence);
}

/* said is null when the attempt says nothing of the port. */
static void add_said(port_account &port, const attempt &tried, size_t order, const check *said)
{
    const verdict own = said == nullptr ? verdict::none : said->verdict;
    const bool worse = own == verdict::fail || (own == verdict::retried && port.found.state == port_state::unknown);
    if (worse && port.found.state != port_state::failed) {
        port.found.state = own == verdict::fail ? port_state::failed : port_state::retried;
        port.found.sentence = sentence_on(tried, *said);
    }
    if (!tried.is_last || own == verdict::fail)
        return;
    const bool covered = std::ranges::find(tried.covers, port.found.port.port) != tried.covers.end();
    const bool any = tried.covers.empty() && tried.judges_ports && !has_reply(tried);
    const bool named = own == verdict::pass || own == verdict::not_tested;
    if (own == verdict::pass && has_reply(tried))
        port.passed.push_back(tried.step);
    else if (named || covered || any)
        port.found.missing.push_back({tried.step, has_reply(tried) ? verdict::not_tested : tried.verdict, order});
}

static void add(std::vector<port_account> &accounts, const attempt &tried, size_t order)
{
    const said_of_ports said = said_in(tried);
    const char *unnamed = tried.is_last ? unnamed_failure(tried, said) : nullptr;
    for (port_account &port : accounts) {
        const auto known = said.find(port.found.port.id);
        if (unnamed != nullptr)
            port.found.missing.push_back({tried.step, tried.verdict, order, unnamed});
        else
            add_said(port, tried, order, known == said.end() ? nullptr : known->second);
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

static port_finding concluded(port_account port)
{
    port_finding &found = port.found;
    const std::string missing = missing_text(found.missing);
    if (found.state == port_state::retried)
        found.sentence += missing.empty() ? "" : " " + missing;
    if (found.state != port_state::unknown)
        return found;
    if (port.passed.empty()) {
        found.sentence = missing.empty() ? "No step judges it." : missing;
    } else if (found.missing.empty()) {
        found.state = port_state::passed;
        found.sentence = "Passed all that the plan asks of it.";
    } else {
        found.state = port_state::passed_so_far;
        found.sentence = fmt::format("Passed {}. {}", list_text(port.passed), missing);
    }
    return found;
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
            port.found.missing.push_back({rest_of_plan, verdict::incomplete, run.attempts.size()});
        ports.push_back(concluded(std::move(port)));
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
    std::vector<std::pair<missing_step, std::vector<int>>> found;
    for (const port_finding &port : ports)
        for (const missing_step &one : port.missing) {
            if (port.state == port_state::failed)
                continue;
            auto known = std::ranges::find_if(
                found, [&](const auto &entry) { return entry.first.order == one.order && entry.first.why == one.why; });
            if (known == found.end())
                known = found.insert(found.end(), {one, {}});
            known->second.push_back(port.port.port);
        }
    std::ranges::stable_sort(found, {}, [](const auto &entry) { return entry.first.order; });
    std::vector<missing_ports> listed;
    listed.reserve(found.size());
    for (const auto &[missing, numbers] : found)
        listed.push_back({missing, numbers.size() == ports.size() ? "all ports"
                                   : numbers.size() == 1          ? "port " + ranges_text(numbers)
                                                                  : "ports " + ranges_text(numbers)});
    return listed;
}

} // namespace reports
