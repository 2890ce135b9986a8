/* SPDX-License-Identifier: MIT
 *
 * What to say to a command line that cannot be read.
 */
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "common/words.h"

namespace station
{

using names = std::vector<std::string>;

static std::string expected_one_of(const std::string &word, const names &choices)
{
    return common::expected_one_of(word, {choices.begin(), choices.end()});
}

static std::vector<const CLI::App *> children(const CLI::App &app)
{
    return app.get_subcommands([](const CLI::App *) { return true; });
}

static names child_names(const CLI::App &app)
{
    names list;
    for (const CLI::App *sub : children(app))
        list.push_back(sub->get_name());
    return list;
}

/* "fpga", when one of its subcommands is still missing. */
static const CLI::App *unfinished(const CLI::App &app)
{
    for (const CLI::App *sub : app.get_subcommands())
        if (!children(*sub).empty() && sub->get_subcommands().empty())
            return sub;
    return nullptr;
}

static bool has_option(const CLI::App &app, const std::string &name)
{
    const CLI::Option *entry = app.get_option_no_throw(name);
    return entry != nullptr && !entry->get_positional();
}

/* The subcommands that have an option. */
static names owners(const CLI::App &app, const std::string &option, const std::string &outer = "")
{
    names list;
    for (const CLI::App *sub : children(app)) {
        const std::string name = outer + sub->get_name();
        if (has_option(*sub, option))
            list.push_back(name);
        const names inner = owners(*sub, option, name + " ");
        list.insert(list.end(), inner.begin(), inner.end());
    }
    return list;
}

/* Options that can be given with a subcommand, or with none. */
static names option_names(const CLI::App &app, const CLI::App *sub)
{
    names list;
    for (const CLI::App *part : {&app, sub})
        for (const CLI::Option *entry : part ? part->get_options() : std::vector<const CLI::Option *>{})
            if (!entry->get_positional() && std::ranges::find(list, entry->get_name()) == list.end())
                list.push_back(entry->get_name());
    return list;
}

static std::string explain_option(const std::string &word, const CLI::App &app, const subcommand_choice &subcommand)
{
    constexpr size_t most_named = 3;
    const std::string name = word.substr(0, word.find('='));
    if (subcommand.sub != nullptr && has_option(*subcommand.sub, name))
        return fmt::format("option '{}' stands before the subcommand, allowed: after it", name);
    names others = owners(app, name);
    if (others.empty())
        return fmt::format("unknown option '{}'{}", name, expected_one_of(name, option_names(app, subcommand.sub)));
    const bool more = others.size() > most_named;
    others.resize(std::min(others.size(), most_named));
    return fmt::format("option '{}' belongs to {}{}{}", name, fmt::join(others, ", "), more ? " and others" : "",
                       subcommand.name ? fmt::format(", not to {}", subcommand.name) : "; no subcommand given");
}

std::string explain_extra(const std::string &word, const CLI::App &app, const subcommand_choice &subcommand)
{
    if (word.starts_with("-"))
        return explain_option(word, app, subcommand);
    if (subcommand.name != nullptr)
        return fmt::format("found '{}', but no more arguments are allowed", word);
    const CLI::App *outer = unfinished(app);
    return fmt::format("{}unknown subcommand '{}'{}", outer ? outer->get_name() + ": " : "", word,
                       expected_one_of(word, child_names(outer ? *outer : app)));
}

/* The option that an error is about, by the name in front of its text: the parser's exceptions tell it nowhere else. */
static const CLI::Option *option_at_fault(const CLI::ParseError &error, const CLI::App &app,
                                          const subcommand_choice &subcommand)
{
    const std::string text = error.what();
    const std::string name = text.substr(0, text.find_first_of(": "));
    for (const CLI::App *part : {subcommand.sub, &app})
        for (const CLI::Option *entry : part != nullptr ? part->get_options() : std::vector<const CLI::Option *>{})
            if (entry->get_name() == name || entry->check_lname(name))
                return entry;
    return nullptr;
}

/* What the subcommand's row says of the option; null for one that it does not have. */
static const option *row_of(const std::string &name, const subcommand_choice &subcommand)
{
    for (const auto &options :
         {subcommand.row ? subcommand.row->options : std::span<const option>{}, waiting_options()})
        for (const option &field : options)
            if (subcommand.row != nullptr && name == field.name)
                return &field;
    return nullptr;
}

std::string explain_error(const CLI::ParseError &error, const CLI::App &app, const subcommand_choice &subcommand)
{
    const bool is_count = dynamic_cast<const CLI::ArgumentMismatch *>(&error) != nullptr ||
                          dynamic_cast<const CLI::RequiredError *>(&error) != nullptr ||
                          dynamic_cast<const CLI::ValidationError *>(&error) != nullptr; /* of an empty value */
    const CLI::Option *wrong = is_count ? option_at_fault(error, app, subcommand) : nullptr;
    if (wrong == nullptr)
        return error.what();
    const std::string name = wrong->get_name();
    if (name == "--directory")
        return "--directory: expected exactly one value, allowed: the host's working directory";
    if (wrong->get_expected_max() == 0)
        return fmt::format("{}: takes no value", name);
    const option *field = row_of(name, subcommand);
    return fmt::format("{}: expected exactly one value{}", name,
                       field != nullptr && field->values == arity::one ? ", allowed: " + allowed_values(*field) : "");
}

std::string explain_nothing(const CLI::App &app)
{
    if (const CLI::App *outer = unfinished(app))
        return fmt::format("{}: no subcommand given, expected one of {}", outer->get_name(),
                           fmt::join(child_names(*outer), ", "));
    return "no subcommand given; 'facmsg-station list' shows them all";
}

} // namespace station
