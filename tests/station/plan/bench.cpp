/* SPDX-License-Identifier: MIT
 *
 * A bench for runs of plans.
 */
#include "bench.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using nlohmann::json;

std::string plan_with(const std::string &steps)
{
    return "name = \"test\"\nversion = \"1\"\nproduct = \"switch\"\n"
           "[serial]\npattern = \"SW[0-9]{4}\"\n"
           "[[panel]]\nname = \"RJ45\"\nports = \"1-24\"\n[[panel]]\nname = \"SFP+\"\nports = \"25-28\"\n" +
           steps;
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

static std::string told_by(const json &artifact)
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

std::string story_of(const std::string &run)
{
    std::string story;
    for (const json &line : journal_of(run)) {
        if (line.contains("testStepArtifact"))
            story += told_by(line["testStepArtifact"]);
        else if (line.contains("testRunArtifact") && line["testRunArtifact"].contains("error"))
            story += line["testRunArtifact"]["error"]["message"].get<std::string>() + " ";
        else if (line.contains("testRunArtifact") && line["testRunArtifact"].contains("testRunEnd"))
            story += line["testRunArtifact"]["testRunEnd"]["status"].get<std::string>() + " " +
                     line["testRunArtifact"]["testRunEnd"]["result"].get<std::string>();
    }
    return story;
}

std::string only_story(const std::string &folder)
{
    const std::vector<std::string> runs = runs_in(folder);
    EXPECT_EQ(runs.size(), 1u);
    if (runs.size() != 1)
        return "";
    const finished checked = run({"check", runs.front() + "/journal.jsonl"});
    EXPECT_EQ(checked.code, 0) << checked;
    return story_of(runs.front());
}
