/* SPDX-License-Identifier: MIT */
#include "transcripts.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <regex>
#include <span>
#include <sstream>

#include "runs.h"

static const std::string ARROW = " -> ", GAP = "…";

static const char SHELL[] = R"(
BOARDS=')" BOARDS R"('; PLANS=')" PLANS R"('
plan_file() { { cat head.toml; echo "$1" | sed 's/; /\n/g'; } >plan.toml; }
station() { case $1 in
    dry) plan_file "$2"; program plan plan.toml --dry-run ;;
    steps) plan_file "step = [$2]"; shift 2
        program plan plan.toml --results results --serial SW0001 --operator O "$@" ;;
    *) program "$@" ;;
esac; }
)";

/* Of neighbouring port rows that differ in the number alone only the first is left. */
static std::string condensed(const std::string &text)
{
    std::istringstream lines(text);
    std::string shown, previous;
    for (std::string line; std::getline(lines, line);) {
        const size_t digit = line.find_first_not_of(" port");
        const size_t after = line.find("  ", digit);
        const bool is_row = digit != line.npos && after != line.npos && isdigit(line[digit]);
        const std::string rest = is_row ? line.substr(after) : "";
        if (!is_row || rest != previous)
            shown += line + "\n";
        previous = rest;
    }
    return shown;
}

/* A part of a transcript from one mark at the beginning of a line to the next: its first line, and the others. */
struct section {
    std::string head, lines;
};

static std::vector<section> sections_of(std::istream &text, const std::string &mark)
{
    std::vector<section> sections{{}};
    for (std::string line; std::getline(text, line);)
        if (line.starts_with(mark))
            sections.push_back({line.substr(mark.size()), ""});
        else if (!line.starts_with("#"))
            sections.back().lines += line + "\n";
    return sections;
}

static void expect_same(const std::string &shown, const std::string &expected)
{
    const size_t gap = expected.find(GAP);
    if (gap == expected.npos)
        EXPECT_EQ(shown, expected);
    else
        EXPECT_TRUE(shown.starts_with(expected.substr(0, gap)) && shown.ends_with(expected.substr(gap + GAP.size())))
            << shown << "\nexpected:\n"
            << expected;
}

/* What a command printed, and the record of its run if there is one. */
static std::string text_of(const finished &end, const std::string &folder)
{
    std::string text = condensed(end.out) + end.err;
    for (size_t at; (at = text.find(folder)) != text.npos;)
        text.replace(at, folder.size(), "DIR");
    if (runs_in(folder).empty())
        return text;
    text = text.substr(0, text.find("\n\n  ")) + "\n" + only_story(folder) + "\n";
    std::filesystem::remove_all(folder + "/results");
    return std::regex_replace(text, std::regex("[0-9]\\.[0-9] s"), "0.1 s");
}

static void play(const section &command, const std::string &folder)
{
    SCOPED_TRACE(command.head);
    std::string script = "cd '" + folder + "'; program() {";
    for (const std::string &word : station({"--directory", folder}))
        script += " '" + word + "'";
    const size_t blank = command.head.find(' '), arrow = command.head.find(ARROW);
    script += " \"$@\"; }" + std::string(SHELL) + "station" + command.head.substr(blank, arrow - blank);
    const finished end = run_command({"sh", "-c", script});
    std::string expected = command.lines.substr(0, command.lines.find_last_not_of('\n') + 1);
    if (arrow != command.head.npos)
        expected = "facmsg-station: " + command.head.substr(arrow + ARROW.size());
    expect_same(text_of(end, folder), expected.empty() ? "" : expected + "\n");
    EXPECT_EQ(end.code, blank == 0 ? 0 : std::stoi(command.head)) << end;
}

static void play_entry(const section &entry)
{
    SCOPED_TRACE(entry.head);
    std::istringstream head(entry.head), lines(entry.lines);
    std::string board;
    words options;
    head >> board;
    for (std::string word; head >> word;)
        options.push_back(word);
    const std::vector<section> commands = sections_of(lines, "$");
    const temporary_folder files;
    std::optional<simulated_switch> host;
    if (board != "none")
        host.emplace(board, commands[0].lines, options);
    const std::string folder = host ? host->folder.path : files.path;
    std::ofstream(folder + "/head.toml") << (host ? PLAN_HEAD : commands[0].lines);
    std::ofstream data(folder + "/in");
    for (int i = 0; i < 204; i++)
        data << static_cast<char>(i * 7);
    data.close();
    for (const section &command : std::span(commands).subspan(1))
        play(command, folder);
}

void play_transcripts(const std::string &file)
{
    std::ifstream text(file);
    const std::vector<section> entries = sections_of(text, "== ");
    EXPECT_GT(entries.size(), 1u);
    for (const section &entry : std::span(entries).subspan(1))
        play_entry(entry);
}
