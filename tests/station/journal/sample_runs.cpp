/* SPDX-License-Identifier: MIT */
#include "sample_runs.h"

#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "station/journal/journal.h"
#include "station/journal/journal_text.h"

using common::place;
using common::verdict;
using journal::run_status;
using nlohmann::ordered_json;

constexpr std::chrono::sys_time<std::chrono::milliseconds> FIRST_RUN{std::chrono::milliseconds(1795421702114)};
constexpr auto LINE_TIME = std::chrono::milliseconds(2);

static std::string rest_of(std::istream &words)
{
    std::string text;
    std::getline(words >> std::ws, text);
    return text.find('\\') == std::string::npos ? text : ordered_json::parse('"' + text + '"').get<std::string>();
}

static std::string port_id(int port)
{
    return fmt::format("port{:02}", port);
}

static std::vector<place> places_in(const std::string &where)
{
    if (where.starts_with("position:"))
        return {{"", "position " + where.substr(9)}};
    std::vector<place> places;
    const std::regex range("(\\d+)(-(\\d+))?");
    for (std::sregex_iterator part(where.begin(), where.end(), range), end; part != end; ++part)
        for (int port = std::stoi(part->str(1)); port <= std::stoi(part->str((*part)[3].matched ? 3 : 1)); port++)
            places.push_back({port_id(port)});
    return places.empty() ? std::vector<place>{{where}} : places;
}

struct story_teller {
    std::chrono::sys_time<std::chrono::milliseconds> now = FIRST_RUN;
    journal::writer journal;
    bool started = false;
    std::string id = {};
    std::map<std::string, std::string> labels{{"serial", "SW28-0042"}, {"ports", "4"}, {"sfp", "0"}, {"hour", "0"}};
    ordered_json parameters{
        {"plan", "plans/final.toml"}, {"plan_sha256", std::string(64, 'a')}, {"stop_on_fail", false}, {"steps", 3}};

    explicit story_teller(const std::filesystem::path &folder) : journal(folder, [this] { return now += LINE_TIME; }) {}

    void label(const std::string &name, const std::string &value)
    {
        if (labels.contains(name))
            labels[name] = value;
        else if (value.empty())
            parameters.erase(name);
        else
            parameters[name] = value;
    }

    ordered_json hardware()
    {
        ordered_json parts{{{"hardwareInfoId", "unit"}, {"name", "unit"}, {"serialNumber", labels["serial"]}}};
        const int rj45 = std::stoi(labels["ports"]), ports = rj45 + std::stoi(labels["sfp"]);
        for (int port = 1; port <= ports; port++)
            parts.push_back({{"hardwareInfoId", port_id(port)},
                             {"name", fmt::format("port {}", port)},
                             {"location", std::to_string(port)},
                             {"partType", port > rj45 ? "SFP+" : "RJ45"}});
        return parts;
    }

    void start()
    {
        now += std::chrono::hours(std::stoi(labels["hour"]));
        started = true;
        auto content = ordered_json::parse(R"({"name":"final","version":"1.4","commandLine":"facmsg-station plan",
            "parameters":null,"dutInfo":{"dutInfoId":"unit","name":"SW-28P","platformInfos":[{"info":"SW-28P"}]},
            "metadata":{"operator":"0042","station":"FT-03","run_id":"7c1e0000000000000000000000000000",
            "station_version":"0.9","library_version":"0.8"}})");
        content["parameters"] = parameters;
        content["dutInfo"]["hardwareInfos"] = hardware();
        journal.run_start(content);
    }

    void step(std::istream &words)
    {
        std::string name, word;
        words >> name;
        ordered_json content{{"request", name}, {"options", ordered_json::object()}, {"attempt", 1}, {"attempts", 1}};
        content.update({{"expected_s", 26}, {"judges_ports", true}, {"timeout_s", 120}});
        for (; words >> word; content["judges_ports"] = word != "alone")
            if (word.starts_with("covers="))
                for (int port = 1; port <= std::stoi(word.substr(7)); port++)
                    content["covers"].push_back(port);
            else if (const size_t of = word.find('/'); of != std::string::npos) {
                content["attempt"] = std::stoi(word);
                content["attempts"] = std::stoi(word.substr(of + 1));
            }
        id = journal.step_start(name, content);
    }

    void measure(const std::string &places, const std::string &name, std::istream &words)
    {
        std::string text, unit;
        std::vector<common::limit> limits;
        words >> text;
        for (std::string word; words >> word;)
            if (int64_t most = 0; word == "<=" && words >> most)
                limits.push_back({"LESS_THAN_OR_EQUAL", most, "max"});
            else
                unit = word;
        const auto value = common::value::of(nlohmann::json::parse(text));
        for (const place &where : places_in(places))
            journal.measurement(id, {.name = name, .where = where, .value = value, .unit = unit, .limits = limits});
    }

    void judge(const std::string &places, const std::string &name, const std::string &sentence)
    {
        static const std::map<std::string_view, verdict> outcomes{{"fail-retried", verdict::retried},
                                                                  {"not-tested", verdict::not_tested},
                                                                  {"unknown", verdict::unjudged},
                                                                  {"pass", verdict::pass},
                                                                  {"fail", verdict::fail}};
        const size_t dash = name.find('-');
        for (const place &where : places_in(places))
            journal.diagnosis(id, {name.substr(0, dash), outcomes.at(name.substr(dash + 1)), sentence, where});
    }

    void end_step(const std::string &word, const std::string &next, const std::string &sentence)
    {
        if (word == "over" && next != "none")
            judge("unit", "step-" + next, sentence);
        if (word == "error")
            journal.error(id, next, sentence);
        if (word == "left")
            journal.log(id, next + " " + sentence);
        journal.step_end(id, word == "over"    ? journal::step_status::complete
                             : word == "error" ? journal::step_status::error
                                               : journal::step_status::skip);
    }

    void tell(const std::string &item)
    {
        static const std::map<std::string, run_status> ends{
            {"PASS", run_status::pass}, {"FAIL", run_status::fail}, {"ERROR", run_status::error}};
        std::istringstream words(item);
        std::string word, next;
        words >> word;
        if (word == "step")
            return step(words);
        if (word == "note")
            return journal.log(id, rest_of(words));
        words >> next >> std::ws;
        if (word == "wait")
            now += std::chrono::milliseconds(std::lround(std::stod(next) * 1000));
        else if (word == "over" || word == "error" || word == "left")
            end_step(word, next, rest_of(words));
        else if (word == "fault")
            journal.run_error(next, rest_of(words));
        else if (word == "end")
            journal.run_end(ends.contains(next) ? ends.at(next) : run_status::skip);
        else if (words.peek() == '=' && words.ignore())
            measure(word, next, words);
        else
            judge(word, next, rest_of(words));
    }
};

static std::vector<std::string> items_of(const std::string &story)
{
    static const std::regex between("\n| \\| ");
    return {std::sregex_token_iterator(story.begin(), story.end(), between, -1), {}};
}

run_folders::run_folders()
{
    std::string pattern = std::filesystem::temp_directory_path() / "test runs XXXXXX";
    path = mkdtemp(pattern.data());
}

run_folders::~run_folders()
{
    std::filesystem::remove_all(path);
}

std::filesystem::path write_run(const std::filesystem::path &folder, const std::string &story)
{
    std::filesystem::create_directories(folder);
    std::filesystem::remove(folder / journal::FILE_NAME);
    story_teller teller(folder);
    for (const std::string &item : items_of(story)) {
        const size_t sign = item.find('=');
        if (!teller.started && sign < item.find(' '))
            teller.label(item.substr(0, sign), item.substr(sign + 1));
        else {
            if (!teller.started)
                teller.start();
            if (!item.empty())
                teller.tell(item);
        }
    }
    return folder;
}

std::string journal_of(const std::string &story)
{
    const run_folders folder;
    return journal::read_text(write_run(folder.path, story) / journal::FILE_NAME);
}

journal::run_record record_of(const std::string &story)
{
    return record_in(journal_of(story));
}

journal::run_record record_in(const std::string &text)
{
    const run_folders folder;
    std::ofstream(folder.path / journal::FILE_NAME) << text;
    return journal::read_run(folder.path);
}

std::vector<sample> read_samples(const std::filesystem::path &file)
{
    std::vector<sample> samples;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("== "))
            samples.push_back({line.substr(3)});
        else if (line.starts_with("-- "))
            samples.back().views.emplace_back(line.substr(3), "");
        else if (!samples.empty())
            (samples.back().views.empty() ? samples.back().story : samples.back().views.back().second) += line + "\n";
    return samples;
}

std::vector<std::vector<std::string>> read_rows(const std::filesystem::path &file)
{
    static const std::regex between(" => "), line_end("\\\\n");
    std::vector<std::vector<std::string>> rows;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with('#')) {
            line = std::regex_replace(line, line_end, "\n");
            rows.push_back({std::sregex_token_iterator(line.begin(), line.end(), between, -1), {}});
        }
    return rows;
}
