/* SPDX-License-Identifier: MIT */
#include "runs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using nlohmann::json;

std::string plan_with(const std::string &steps)
{
    return PLAN_HEAD + "step = [" + steps + "]\n";
}

words plan_line(const std::string &folder, const std::string &plan, const words &options)
{
    std::ofstream(folder + "/plan.toml") << plan;
    words line{"--directory", folder, "plan", folder + "/plan.toml"};
    if (std::ranges::find(options, "--results") == options.end())
        line.insert(line.end(), {"--results", folder + "/results"});
    line.insert(line.end(), options.begin(), options.end());
    return line;
}

words steps_line(const std::string &folder, const std::string &steps, const words &options)
{
    words line = plan_line(folder, plan_with(steps), options);
    line.insert(line.end(), {"--serial", "SW0001", "--operator", "O"});
    return line;
}

std::vector<std::string> runs_in(const std::string &folder)
{
    std::vector<std::string> runs;
    if (std::filesystem::exists(folder + "/results"))
        for (const auto &entry : std::filesystem::directory_iterator(folder + "/results"))
            runs.push_back(entry.path());
    std::ranges::sort(runs);
    return runs;
}

std::vector<json> journal_of(const std::string &run)
{
    std::ifstream file(run + "/journal.jsonl");
    std::vector<json> lines;
    for (std::string line; std::getline(file, line) && !file.eof();)
        lines.push_back(json::parse(line));
    return lines;
}

static std::string step_words(const json &artifact)
{
    if (artifact.contains("testStepStart"))
        return artifact["testStepStart"]["name"];
    if (artifact.contains("extension"))
        return "#" + artifact["extension"]["content"]["attempt"].dump();
    if (artifact.contains("diagnosis") && artifact["diagnosis"]["type"] != "PASS")
        return " " + artifact["diagnosis"]["verdict"].get<std::string>() + ":" +
               artifact["diagnosis"].value("hardwareInfoId", "?");
    if (artifact.contains("error"))
        return " " + artifact["error"]["symptom"].get<std::string>();
    if (artifact.contains("log"))
        return " " + artifact["log"]["message"].get<std::string>();
    if (artifact.contains("testStepEnd"))
        return " " + artifact["testStepEnd"]["status"].get<std::string>() + "\n";
    return "";
}

static std::string run_words(const json &artifact)
{
    if (artifact.contains("error"))
        return artifact["error"]["message"].get<std::string>() + " ";
    if (!artifact.contains("testRunEnd"))
        return "";
    const json &end = artifact["testRunEnd"];
    return end["status"].get<std::string>() + " " + end["result"].get<std::string>();
}

std::string story_of(const std::string &run)
{
    std::string story;
    for (const json &line : journal_of(run))
        story += line.contains("testStepArtifact")  ? step_words(line["testStepArtifact"])
                 : line.contains("testRunArtifact") ? run_words(line["testRunArtifact"])
                                                    : "";
    return story;
}

std::string only_story(const std::string &folder)
{
    const std::vector<std::string> runs = runs_in(folder);
    EXPECT_EQ(runs.size(), 1u);
    if (runs.size() != 1)
        return "";
    const finished check = run({"check", runs.front() + "/journal.jsonl"});
    EXPECT_EQ(check.code, 0) << check;
    return story_of(runs.front());
}
