/* SPDX-License-Identifier: MIT
 *
 * The command line: made from the command table, read into one request.
 */
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "nearest.h"

namespace station
{

/* sent and field must outlive the application. */
static void add_option(CLI::App &sub, request &sent, const option &field)
{
    if (field.values == arity::flag) {
        sub.add_flag_callback(
            field.name, [&] { field.set(sent, field, ""); }, field.help);
        return;
    }
    CLI::Option *added;
    if (field.values == arity::one)
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
        added->default_str(name_of(field.choices, static_cast<uint32_t>(field.initial)));
    if (field.values == arity::one)
        added->type_name(allowed_values(field));
}

static void add_globals(CLI::App &app, settings &chosen)
{
    app.add_option("--directory", chosen.directory, "working directory of the host, where its socket is")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_flag("--json", chosen.json, "print one JSON object instead of a table");
    app.add_flag("--no-progress", chosen.no_progress, "show no progress line");
}

/* The first argument that nothing took is a subcommand's name, an option's, or one argument too many. */
[[noreturn]] static void refuse_extra(const std::string &found, const CLI::App &app, const CLI::App *sub)
{
    std::vector<std::string> names;
    if (found.starts_with("-")) {
        for (const CLI::App *owner : {sub, &app})
            for (const CLI::Option *known : owner ? owner->get_options() : std::vector<const CLI::Option *>{})
                names.push_back(known->get_name());
        throw usage_error(fmt::format("unknown option '{}'{}", found, did_you_mean(found, names)));
    }
    if (sub != nullptr)
        throw usage_error(fmt::format("{}: found '{}', but no more arguments are allowed", sub->get_name(), found));
    for (const command &row : commands())
        names.emplace_back(row.name);
    throw usage_error(fmt::format("unknown subcommand '{}'{}", found, did_you_mean(found, names)));
}

invocation read_command_line(int argc, char **argv)
{
    invocation call{};
    CLI::App app{"Runs the factory tests of a switch through the test service in its host process.", "facmsg-station"};
    app.fallthrough();
    app.allow_extras();
    add_globals(app, call.chosen);
    std::deque<request> requests;
    for (const command &row : commands()) {
        request &sent = requests.emplace_back(empty_request(row));
        CLI::App *sub = app.add_subcommand(row.name, row.help);
        sub->allow_extras();
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
        throw usage_error(error.what());
    }
    const std::vector<std::string> extras = app.remaining(true);
    const auto subs = app.get_subcommands();
    if (!extras.empty())
        refuse_extra(extras.front(), app, subs.empty() ? nullptr : subs.front());
    if (subs.empty())
        throw usage_error("no subcommand given; 'facmsg-station list' shows them all");
    return call;
}

} // namespace station
