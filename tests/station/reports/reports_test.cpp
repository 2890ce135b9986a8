/* SPDX-License-Identifier: MIT
 *
 * What each report says of a run, and that no run says it in another report's or program's words.
 */
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <unistd.h>

#include "sample_runs.h"
#include "station/journal/journal_text.h"
#include "station/reports/report_parts.h"
#include "station/reports/reports.h"

using common::exit_code;
using journal::run_record;

constexpr const char *RUN_DIR = "results/run";

/* Without blanks at the ends of lines, and lines of nothing else. */
static std::string tidy(const std::string &text)
{
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);)
        if (const size_t begin = line.find_first_not_of(" |"); begin != std::string::npos)
            result += line.substr(begin, line.find_last_not_of(' ') + 1 - begin) + "\n";
    return result;
}

static std::string verdict_view(const run_record &run)
{
    const std::string text = reports::verdict_text(run, RUN_DIR, false, 80);
    return text.substr(text.find(fmt::format("\n{}  ", word_of(run.result))) + 1);
}

static std::string csv_view(const run_record &run)
{
    std::string text = reports::csv_text(run);
    for (size_t at = 0; (at = text.find('\r', at)) != std::string::npos; at += 2)
        text.replace(at, 1, "\\r");
    return text;
}

/* The members in one line, then a line for each element of the lists. */
static std::string json_view(const run_record &run)
{
    std::string members, elements;
    const auto object = nlohmann::ordered_json::parse(reports::run_json(run, RUN_DIR));
    for (const auto &[name, value] : object.items())
        if (!value.is_array())
            members += fmt::format("{}={} ", name, value.dump());
        else
            for (const auto &one : value)
                elements += fmt::format("{} {}\n", name, one.dump());
    return tidy(members + "\n" + elements);
}

static std::string attributes_of(const pugi::xml_node &node)
{
    std::string text;
    for (const auto &attribute : node.attributes())
        text += fmt::format(" {}={}", attribute.name(), attribute.value());
    return text;
}

/* Whose run it is, the counts, and a line for each case that did not simply pass. */
static std::string junit_view(const run_record &run)
{
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(reports::junit_text(run).c_str()));
    auto suites = document.child("testsuites"), suite = suites.child("testsuite");
    std::string head, cases;
    std::set<std::string> names;
    for (const char *name : {"name", "timestamp", "hostname"}) {
        head += fmt::format("{}={} ", name, suite.attribute(name).value());
        EXPECT_TRUE(suite.remove_attribute(name) && (suites.remove_attribute(name) || *name != 'n'));
    }
    EXPECT_EQ(attributes_of(suites), attributes_of(suite));
    for (const auto &property : suite.child("properties").children())
        head += fmt::format("{}={} ", property.attribute("name").value(), property.attribute("value").value());
    for (const auto &node : suite.children("testcase")) {
        EXPECT_TRUE(names.insert(attributes_of(node)).second);
        if (node.first_child())
            cases += fmt::format("{} {} {}:", node.attribute("classname").value(), node.attribute("name").value(),
                                 node.attribute("time").value());
        for (const auto &inner : node.children())
            cases += fmt::format(" {} {}: {}\n", inner.name(), inner.attribute("type").value(), inner.text().get());
        EXPECT_STREQ(node.child("failure").attribute("message").value(), node.child("failure").text().get());
    }
    EXPECT_EQ(names.size(), suite.attribute("tests").as_uint());
    return tidy(head + "\n" + attributes_of(suite) + "\n" + cases);
}

/* The colours that the classes of an element name: [fail]. */
static std::string colours_of(const pugi::xml_node &node)
{
    std::istringstream classes(node.attribute("class").value());
    std::string colours;
    for (std::string name; classes >> name;)
        if (name == "bad" || name.starts_with("v-") || name.starts_with("p-") || name.starts_with("said-"))
            colours += fmt::format("[{}]", name.substr(name.find('-') + 1));
    return colours;
}

/* The text of the page below an element, a line for each block. */
static std::string text_of(const pugi::xml_node &node)
{
    static const std::set<std::string> blocks{"tr", "li", "p", "div", "h1", "h2", "svg", "g", "figcaption", "summary"};
    if (node.type() == pugi::node_pcdata)
        return node.value();
    const std::string name = node.name();
    std::string text = blocks.contains(name) ? "\n" : name == "td" || name == "th" ? " | " : " ";
    text += colours_of(node) + node.attribute("transform").value();
    for (const auto &inner : node.children())
        text += text_of(inner);
    return text;
}

static std::string page_view(const run_record &run)
{
    std::string text = reports::html_text(run);
    for (size_t at = 0; (at = text.find("<details open>", at)) != std::string::npos;)
        text.replace(at, 14, "<details>OPEN\n");
    const size_t begin = text.find("<main>");
    pugi::xml_document page;
    EXPECT_TRUE(page.load_string(text.substr(begin, text.find("</main>") + 7 - begin).c_str()));
    return tidy(text_of(page.child("main")));
}

static std::string panel_view(const run_record &run)
{
    const std::string page = page_view(run);
    const size_t begin = page.find("Front panel");
    return page.substr(begin, page.find("\nSteps\n") + 1 - begin);
}

/* The ports' places, a line for each block. */
static std::string layout_view(const run_record &run)
{
    const std::string page = reports::html_text(run);
    const std::regex part(
        R"((?:<figcaption>|aria-label=")([^"<]* ports \d+ to \d+)\" (width="\d+" height="\d+")|data-port="(\d+)\"[^>]*translate(\([^)]*\)))");
    std::string text;
    for (std::sregex_iterator found(page.begin(), page.end(), part), end; found != end; ++found)
        text += (*found)[1].matched ? fmt::format("{}{}: {}", text.empty() ? "" : "\n", found->str(1), found->str(2))
                                    : " " + found->str(3) + found->str(4);
    return text + "\n";
}

static const std::map<std::string, std::string (*)(const run_record &)> views{
    {"verdict", verdict_view}, {"csv", csv_view},     {"json", json_view},    {"junit", junit_view},
    {"page", page_view},       {"panel", panel_view}, {"layout", layout_view}};

/* Whether the text is the expected one, in which "..." stands for any lines. */
static bool fits(const std::string &text, const std::string &expected)
{
    static const std::regex gap(R"((^|\n)\.\.\.\n)");
    size_t at = 0, pieces = 0;
    for (std::sregex_token_iterator piece(expected.begin(), expected.end(), gap, -1), end; piece != end; ++piece) {
        const size_t place = text.find(piece->str(), at);
        if (place == std::string::npos || (pieces++ == 0 && place > 0))
            return false;
        at = place + piece->str().size();
    }
    return at == text.size() || expected.ends_with("...\n");
}

TEST(reports, say_of_a_run_what_they_have_to)
{
    for (const sample &one : read_samples(SAMPLES)) {
        const run_record run = record_of(one.story);
        for (const auto &[view, expected] : one.views) {
            const std::string text = views.at(view)(run) + (expected.ends_with("\n\n") ? "\n" : "");
            EXPECT_TRUE(fits(text, expected)) << one.name << ": " << view << "\n" << text;
        }
        std::istringstream lines(reports::verdict_text(run, RUN_DIR, false, 40));
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 40U) << line;
    }
}

/* The exit code, and the first line of the page; what JUnit says at last. */
TEST(reports, say_how_a_run_ended)
{
    for (const auto &row : read_rows(ENDINGS)) {
        const run_record run = record_of(row.at(0));
        const std::string page = page_view(run), line = page.substr(0, page.find('\n'));
        EXPECT_EQ(fmt::format("{} {}", static_cast<int>(reports::exit_code_of(run)), line), row.at(1)) << row[0];
        EXPECT_TRUE(row.size() < 3 || ("\n" + junit_view(run)).ends_with("\n" + row[2] + "\n")) << junit_view(run);
    }
}

TEST(reports, say_the_verdict_large_where_it_fits)
{
    const std::string large =
        "\n\033[1;32m  ####    ###    ####   ####\n  #   #  #   #  #      #\n  ####   #####   ###    ###\n"
        "  #      #   #      #      #\n  #      #   #  ####   ####\n\033[0m\n\033[1;32mPASS\033[0m  ";
    EXPECT_TRUE(reports::verdict_text(record_of("end PASS"), RUN_DIR, true, 28).starts_with(large));
    EXPECT_TRUE(reports::verdict_text(record_of("end PASS"), RUN_DIR, false, 27).starts_with("\nPASS  "));
}

TEST(port_state, says_what_is_known_and_what_is_missing)
{
    for (const auto &row : read_rows(PORT_STATES)) {
        const auto port = reports::ports_of(record_of(row.at(0))).at(std::stoul(row.at(1)) - 1);
        EXPECT_EQ(fmt::format("{}: {}", word_of(port.state), port.sentence), row.at(2)) << row[0];
    }
}

TEST(reports, read_journals_of_other_programs)
{
    EXPECT_EQ("\n" + csv_view(record_in(journal::read_text(FOREIGN_JOURNAL))), R"(
serial,run_id,step,attempt,port,kind,name,value,unit,limits,verdict,message,time\r
R7,,power,1,1,measurement,voltage,53.8,V,">= 50.0, < 57",,,2025-03-04T08:15:04.114Z\r
R7,,power,1,1,diagnosis,voltage-good,,,,PASS,,2025-03-04T08:15:05.114Z\r
R7,,power,1,unit,diagnosis,step,,,,PASS,,2025-03-04T08:15:09.114Z\r
R7,,errors,1,1,measurement,bit-errors,0,count,<= 0,,,2025-03-04T08:15:08.114Z\r
R7,,errors,1,1,measurement,bit-errors,17,count,<= 0,,,2025-03-04T08:15:10.114Z\r
R7,,errors,1,1,diagnosis,bit-errors-high,,,,FAIL,17 bit errors; expected none.,2025-03-04T08:15:12.114Z\r
R7,,errors,1,unit,diagnosis,step,,,,FAIL,,2025-03-04T08:15:15.114Z\r
)");
}

/* What the tool prints as JSON, with its exit code in front. */
static std::string printed_by(const std::function<exit_code()> &tool)
{
    testing::internal::CaptureStdout();
    const int code = static_cast<int>(tool());
    return fmt::format("{} {}", code, testing::internal::GetCapturedStdout());
}

TEST(tools, write_the_reports_and_answer_with_the_verdict)
{
    using reports::form, reports::report_tool;
    const run_folders folder;
    const auto run = write_run(folder.path / "run", "step poe | over fail | end FAIL");
    EXPECT_EQ(report_tool(run, form::text), exit_code::failed);
    EXPECT_NE(fcntl(STDIN_FILENO, F_GETFD), -1); /* only its own files are closed */
    for (const char *name : {"junit.xml", "report.html", "results.csv"})
        EXPECT_GT(std::filesystem::file_size(run / name), 100U);
    EXPECT_EQ(report_tool(folder.path, form::text), exit_code::usage);
    EXPECT_EQ(printed_by([&] { return report_tool(folder.path, form::json); }).find("2 {\n  \"verdict\": "), 0U);
    std::filesystem::remove(run / "report.html");
    std::filesystem::create_directories(run / "report.html" / "in the way");
    const std::string text = printed_by([&] { return report_tool(run, form::text); });
    EXPECT_EQ(text.find("4 RESULTS NOT SAVED  "), 0U) << text; /* in place of the verdict */
    EXPECT_EQ(text.find("FAIL"), std::string::npos) << text;
    const auto object = nlohmann::json::parse(printed_by([&] { return report_tool(run, form::json); }).substr(2));
    EXPECT_EQ(object["verdict"], "FAIL");
    EXPECT_EQ(object["exit_code"], 4);
    EXPECT_EQ(object["error"].get<std::string>().find("cannot write "), 0U) << object;
    EXPECT_FALSE(std::filesystem::exists(run / "report.html.unfinished"));
}

TEST(tools, check_a_journal_line_by_line)
{
    using reports::form, reports::check_tool;
    const run_folders folder;
    const std::string file = write_run(folder.path, "step poe | over fail | end FAIL") / journal::FILE_NAME;
    EXPECT_EQ(printed_by([&] { return check_tool(file, form::text); }), "0 " + file + ": 7 lines, valid\n");
    std::ofstream(file, std::ios::app) << "{";
    const std::string sentence = "the line has no line end, so it may not be whole";
    EXPECT_EQ(printed_by([&] { return check_tool(file, form::text); }), "1 " + file + ":8: " + sentence + "\n");
    const auto object = nlohmann::json::parse(printed_by([&] { return check_tool(file, form::json); }).substr(2));
    EXPECT_EQ(object.dump(), fmt::format(R"({{"exit_code":1,"file":"{}","lines":8,"problems":[{{"line":8,)"
                                         R"("sentence":"{}"}}],"valid":false}})",
                                         file, sentence));
    EXPECT_EQ(check_tool(folder.path, form::text), exit_code::usage);
}
