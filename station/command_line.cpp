/* SPDX-License-Identifier: MIT
 *
 * The command line: made from the command table, read into one request.
 */
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "text/nearest.h"

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
}

/* "fpga write" is the subcommand write of the subcommand fpga. */
static CLI::App *add_subcommand(CLI::App &app, const command &row)
{
    const std::string name = row.name;
    const size_t blank = name.find(' ');
    if (blank == std::string::npos)
        return app.add_subcommand(name, row.help);
    const std::string outer = name.substr(0, blank);
    const auto same_name = [&](const CLI::App *known) { return known->get_name() == outer; };
    const std::vector<CLI::App *> found = app.get_subcommands(same_name);
    CLI::App *parent = found.empty() ? app.add_subcommand(outer, fmt::format("see '{} --help'", outer)) : found.front();
    parent->allow_extras();
    return parent->add_subcommand(name.substr(blank + 1), row.help);
}

/* The first argument that nothing took is a subcommand's name, an option's, or one argument too many. */
static std::string explain_extra(const std::string &found, const command *row)
{
    std::vector<std::string_view> names;
    if (found.starts_with("-")) {
        names = {"--help", "--directory", "--json", "--no-progress"};
        for (const option &field : row ? row->options : std::span<const option>{})
            if (*field.name == '-')
                names.emplace_back(field.name);
        return fmt::format("unknown option '{}'{}", found, text::expected_one_of(found, names));
    }
    if (row != nullptr)
        return fmt::format("{}: found '{}', but no more arguments are allowed", row->name, found);
    for (const command &known : commands())
        names.emplace_back(known.name);
    return fmt::format("unknown subcommand '{}'{}", found, text::expected_one_of(found, names));
}

/* An option of the row with too few or too many values; every other error explains itself. */
static std::string explain_error(const std::string &what, const command *row)
{
    const std::string name = what.substr(0, what.find_first_of(": "));
    if (name == "--directory")
        return "--directory: expected exactly one value, allowed: the host's working directory";
    if (what.ends_with("flag override"))
        return fmt::format("--{}: takes no value", name);
    for (const option &field : row ? row->options : std::span<const option>{})
        if (name == field.name && field.values != arity::flag)
            return fmt::format("{}: expected exactly one value{}", name,
                               field.values == arity::one ? ", allowed: " + allowed_values(field) : "");
    return what;
}

invocation read_command_line(int argc, char **argv)
{
    invocation call{};
    CLI::App app{"Runs the factory tests of a switch through the test service in its host process.", "facmsg-station"};
    app.get_formatter()->column_width(26);
    app.footer("Exit codes: 0 passed, 1 the unit failed, 2 wrong command line, 3 no verdict,\n130 interrupted.");
    app.fallthrough();
    app.allow_extras();
    app.require_subcommand(0, 1);
    add_globals(app, call.chosen);
    std::deque<request> requests;
    const command *given = nullptr;
    for (const command &row : commands()) {
        request &sent = requests.emplace_back(empty_request(row));
        CLI::App *sub = add_subcommand(app, row);
        sub->allow_extras();
        sub->preparse_callback([&given, &row](size_t) { given = &row; });
        sub->parse_complete_callback([&call, &row, &sent] {
            call.row = &row;
            call.sent = sent;
        });
        for (const option &field : row.options)
            add_option(*sub, sent, field);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        call.row = nullptr;
        call.help = app.help();
        return call;
    } catch (const CLI::ParseError &error) {
        throw usage_error(explain_error(error.what(), given));
    }
    std::vector<std::string> extras = app.remaining(true);
    std::erase(extras, "--");
    if (!extras.empty())
        throw usage_error(explain_extra(extras.front(), given));
    if (call.row == nullptr)
        throw usage_error("no subcommand given; 'facmsg-station list' shows them all");
    return call;
}

} // namespace station
