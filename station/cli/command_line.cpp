/* SPDX-License-Identifier: MIT
 *
 * The command line: made from the command table, read into one request.
 */
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sstream>

#include "common/terminal.h"
#include "common/text.h"

namespace station
{

/* sent and field must outlive the application. */
static void add_option(CLI::App &sub, request &sent, const option &field)
{
    if (field.values == arity::flag) {
        sub.add_flag_callback(
               field.name, [&] { field.set(sent, field, ""); }, field.help)
            ->disable_flag_override();
        return;
    }
    CLI::Option *added;
    if (field.values != arity::any)
        added = sub.add_option_function<std::string>(
            field.name, [&](const std::string &value) { field.set(sent, field, value); }, field.help);
    else
        added = sub.add_option_function<std::vector<std::string>>(
            field.name,
            [&](const std::vector<std::string> &values) {
                field.set(sent, field, fmt::format("{}", fmt::join(values, " ")));
            },
            field.help);
    if (added->get_positional())
        added->required(field.values == arity::one);
    else if (is_payload_word(field))
        added->default_str(field.choices.empty() ? field.hex ? "0x0" : std::to_string(field.initial)
                                                 : name_of(field.choices, static_cast<uint32_t>(field.initial)));
    if (field.values == arity::one)
        added->type_name("VALUE")->description(fmt::format("{} ({})", field.help, allowed_values(field)));
}

static void add_globals(CLI::App &app, settings &chosen)
{
    app.add_option("--directory", chosen.directory, "working directory of the host")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_flag("--json", chosen.json, "print one JSON object instead of a table")->disable_flag_override();
    app.add_flag("--no-progress", chosen.no_progress, "show no progress line")->disable_flag_override();
    app.set_version_flag("--version", fmt::format("facmsg-station {}", common::version()), "show the version and exit");
}

/* "fpga write" is the subcommand write of the subcommand fpga. */
static CLI::App *add_subcommand(CLI::App &app, const command &row)
{
    const std::string name = row.name;
    const size_t blank = name.find(' ');
    if (blank == std::string::npos)
        return app.add_subcommand(name, row.help);
    const std::string outer = name.substr(0, blank);
    const auto same_name = [&](const CLI::App *entry) { return entry->get_name() == outer; };
    const std::vector<CLI::App *> parents = app.get_subcommands(same_name);
    CLI::App *parent =
        parents.empty() ? app.add_subcommand(outer, fmt::format("see '{} --help'", outer)) : parents.front();
    parent->allow_extras();
    return parent->add_subcommand(name.substr(blank + 1), row.help);
}

static void add_requests(CLI::App &app, std::deque<request> &requests, subcommand_choice &subcommand, invocation &call)
{
    for (const command &row : commands()) {
        request &sent = requests.emplace_back(empty_request(row));
        CLI::App *sub = add_subcommand(app, row);
        sub->allow_extras();
        sub->preparse_callback([&subcommand, &row, sub](size_t) { subcommand = {sub, row.name, &row}; });
        sub->parse_complete_callback([&call, &row, &sent] {
            call.row = &row;
            call.sent = sent;
        });
        for (const option &field : row.options)
            add_option(*sub, sent, field);
        if (row.decode != nullptr || row.transfer != nullptr)
            for (const option &field : waiting_options())
                add_option(*sub, sent, field);
    }
}

static void add_tools(CLI::App &app, subcommand_choice &subcommand, invocation &call)
{
    for (const tool &entry : tools()) {
        CLI::App *sub = app.add_subcommand(entry.name, entry.help);
        sub->allow_extras();
        const tool_run run = entry.add(*sub);
        sub->preparse_callback([&subcommand, &entry, sub](size_t) { subcommand = {sub, entry.name, nullptr}; });
        sub->parse_complete_callback([&call, &entry, run] {
            call.run = run;
            call.tool_name = entry.name;
        });
    }
}

/* A word as a shell takes it. */
static std::string quoted(const std::string &word)
{
    constexpr const char *harmless = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./,:=@%+-";
    if (!word.empty() && word.find_first_not_of(harmless) == std::string::npos)
        return word;
    std::string text = "'";
    for (const char letter : word)
        text += letter == '\'' ? "'\\''" : std::string(1, letter);
    return text + "'";
}

/* Whoever has a narrow terminal gets each description below its option, and lines folded to the width. */
static std::string help_of(CLI::App &app)
{
    constexpr size_t NARROW_INDENT = 6;
    const size_t columns = common::stdout_columns();
    if (columns >= common::SCREEN_COLUMNS)
        return app.help();
    app.get_formatter()->column_width(NARROW_INDENT);
    std::istringstream lines(app.help());
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        const size_t indent = std::min(line.find_first_not_of(' '), line.size());
        text += line.substr(0, indent) + common::wrapped(line.substr(indent), indent, columns) + "\n";
    }
    return text;
}

static void parse(CLI::App &app, int argc, char **argv, const subcommand_choice &subcommand, invocation &call)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        call.help = help_of(app);
        return;
    } catch (const CLI::CallForVersion &version) {
        call.help = fmt::format("{}\n", version.what());
        return;
    } catch (const CLI::RequiredError &error) { /* what was given comes before what was not */
        if (app.count("--version") > 0) {
            call.help = app.version() + "\n";
            return;
        }
        for (const std::string &word : app.remaining(true))
            if (word.starts_with("-") && word != "--")
                throw usage_error(explain_extra(word, app, subcommand));
        throw usage_error(explain_error(error, app, subcommand));
    } catch (const CLI::ParseError &error) {
        throw usage_error(explain_error(error, app, subcommand));
    }
    std::vector<std::string> extras = app.remaining(true);
    std::erase(extras, "--");
    if (!extras.empty())
        throw usage_error(explain_extra(extras.front(), app, subcommand));
    if (call.row == nullptr && call.tool_name == nullptr)
        throw usage_error(explain_nothing(app));
    if (call.row != nullptr)
        check_together(*call.row, call.sent);
}

invocation read_command_line(int argc, char **argv)
{
    invocation call{};
    CLI::App app{"Runs the factory tests of a switch through the test service in its host process.", "facmsg-station"};
    app.get_formatter()->column_width(26);
    app.footer("Exit codes: 0 passed, 1 the unit failed, 2 wrong command line or plan, 3 no verdict,\n"
               "4 results not saved, 5 nothing was run or judged, 6 a part of the plan passed,\n"
               "129, 130, 131 and 143 interrupted.");
    app.fallthrough();
    app.allow_extras();
    app.require_subcommand(0, 1);
    add_globals(app, call.chosen);
    for (const char *word : std::span(argv, static_cast<size_t>(argc)))
        call.chosen.command_line += (call.chosen.command_line.empty() ? "" : " ") + quoted(word);
    std::deque<request> requests;
    subcommand_choice subcommand;
    add_requests(app, requests, subcommand, call);
    add_tools(app, subcommand, call);
    try {
        parse(app, argc, argv, subcommand, call);
    } catch (usage_error &error) {
        error.subcommand = subcommand.name ? subcommand.name : "";
        throw;
    }
    return call;
}

} // namespace station
