/* SPDX-License-Identifier: MIT */
#include "transcripts.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using line_runner = std::function<finished(const simulated_switch &board, const words &line)>;

static std::string condensed(const std::string &text)
{
    std::istringstream lines(text);
    std::string shown, previous;
    for (std::string line; std::getline(lines, line);) {
        const size_t digit = line.find_first_not_of(' ');
        const size_t after = line.find("  ", digit);
        const bool is_row = digit != line.npos && after != line.npos && isdigit(line[digit]);
        const std::string rest = is_row ? line.substr(after) : "";
        if (!is_row || rest != previous)
            shown += line + "\n";
        previous = rest;
    }
    return shown;
}

static void play(const std::string &entry, const line_runner &run_line)
{
    std::istringstream lines(entry);
    std::string board, faults, command, expected;
    std::getline(lines, board);
    while (std::getline(lines, command) && !command.starts_with("$ "))
        faults += command + "\n";
    for (std::string line; std::getline(lines, line);)
        expected += line + "\n";
    words arguments;
    std::istringstream options(command.substr(2));
    for (std::string word; options >> word;)
        arguments.push_back(word);
    const temporary_folder folder;
    const std::string file = folder.path + "/board.toml";
    std::ofstream(file) << "base = \"" BOARDS "/" << board << ".toml\"\nname = \"changed\"\n" << faults;
    const finished end = run_line(simulated_switch(file), arguments);
    EXPECT_EQ(condensed(end.out) + end.err + "exit " + std::to_string(end.code) + "\n", expected) << board << "\n"
                                                                                                  << faults << command;
}

void play_transcripts(const std::string &file, const line_runner &run_line)
{
    std::ifstream lines(file);
    std::string entry;
    int played = 0;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("#"))
            entry += line + "\n";
        if (line.starts_with("exit ")) {
            play(entry.substr(entry.find_first_not_of('\n')), run_line);
            entry.clear();
            played++;
        }
    }
    EXPECT_GT(played, 0);
}
