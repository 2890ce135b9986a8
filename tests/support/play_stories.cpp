/* SPDX-License-Identifier: MIT
 *
 * Plays the stories that stories.py tells against the library: it has to bring about just those events, in that order,
 * and gets from its driver what the story says. Each is played at log levels 2 and 1, or as it says.
 */
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "simulation.h"

namespace
{

struct story_line {
    std::string place;
    int count, result;
    std::string outputs, text;

    /* The log level from which on it is an event. */
    int level() const
    {
        return text.starts_with("! ") ? 1 : text.starts_with(". ") ? 2 : 0;
    }
    /* The words of its text; from after the first one on. */
    std::vector<std::string> words() const
    {
        std::istringstream all(text);
        return {std::istream_iterator<std::string>(all), {}};
    }
};

struct story {
    std::string name;
    std::vector<story_line> lines;
};

/* Pointers that a log line shows: slots by name, others as {pointer}. */
std::string named_pointers(std::string text)
{
    for (size_t at = 0; (at = text.find("0x", at)) != std::string::npos; at += 2) {
        char *end = nullptr;
        const std::string slot = slot_of(static_cast<uintptr_t>(strtoull(text.c_str() + at, &end, 16)));
        const auto size = static_cast<size_t>(end - text.c_str()) - at;
        if (!slot.empty())
            text.replace(at, size, "{" + slot + "}");
        else if (at > 1 && text.compare(at - 2, 2, "--") == 0)
            text.replace(at, size, "{pointer}");
    }
    return text;
}

/* One log line without place and line end: "<operation> text". "\c" tells of a missing end, "\xb6" of such a byte. */
std::string shown_log(std::string line)
{
    const size_t place = line.find(":<"), text = line.find("] ");
    if (line.starts_with("[FACTORY <") && place < text && text != std::string::npos)
        line = line.substr(9, place - 9) + line.substr(text + 1);
    line = line.ends_with('\n') ? line.substr(0, line.size() - 1) : line + "\\c";
    std::string all;
    for (const char byte : line) {
        char escape[5] = {byte};
        if (byte < ' ' || byte > '~')
            snprintf(escape, sizeof(escape), "\\x%02x", static_cast<uint8_t>(byte));
        all += escape;
    }
    return named_pointers(all.ends_with("> ") ? all.substr(0, all.size() - 1) : all);
}

/* Plays a story in a process of its own, where the library has no past. It ends at the first event that is not told:
 * what went otherwise goes to the process that waits. */
class player
{
  public:
    player(const story &told, int log_level, int report_to)
        : lines(told.lines), level(log_level), report(report_to),
          log(log_level, [this](const std::string &text) { logged(text); })
    {
        driver.answer = [this](const driver_call &call) { return called(call); };
        simulation::on_event = [this](const std::string &text) { event(text); };
    }
    void play()
    {
        for (go_to(0); at < lines.size();)
            if (lines[at].text.starts_with("ask "))
                ask(lines[at].words());
            else
                differ("the end of the request");
        if (simulation::failure_pending())
            differ("what was to fail was never done");
        if (simulation::live_allocations() != 0)
            differ("memory that was not freed");
    }

  private:
    [[noreturn]] void differ(const std::string &seen)
    {
        const story_line expected = at < lines.size() ? lines[at] : story_line{"at the end", 1, 0, "-", "nothing more"};
        const std::string text = expected.place + ": expected: " + expected.text + "\n  seen: " + seen +
                                 "\n  at log level " + std::to_string(level);
        _exit(write(report, text.data(), text.size()) < 0);
    }
    /* To the next event, past log lines that the level leaves out; does what the world does before it. */
    void go_to(size_t line)
    {
        for (at = line; at < lines.size() && (lines[at].level() > level || act(lines[at])); at++)
            continue;
        left = at < lines.size() ? lines[at].count : 0;
    }
    /* False for an event. */
    static bool act(const story_line &line)
    {
        const auto words = line.words();
        if (words[0] == "empty")
            return empty_slot(words.at(1));
        if (words[0] == "pass")
            simulation::pass(std::stoull(words.at(1)) * 1000000);
        else if (words[0] == "receive")
            receive(words, line.count);
        else if (line.text.starts_with("no memory"))
            simulation::fail_allocation(words.size() > 2 ? std::stoi(words[2]) : 1);
        else if (line.text == "no clock")
            simulation::fail_next("gettimeofday");
        else
            return words[0] == "at";
        return true;
    }
    /* receive PHY_ID LENGTH BYTES */
    static void receive(const std::vector<std::string> &words, int count)
    {
        const auto bytes = long_bytes(words.at(3), std::stoul(words[2]));
        const pack_info info = {0, 0, static_cast<uint32_t>(std::stoul(words[1]))};
        while (count-- > 0)
            vexa_recv_packet(&info, bytes.data(), static_cast<uint32_t>(bytes.size()));
    }
    void logged(const std::string &text)
    {
        for (size_t from = 0, end; from < text.size(); from = end) {
            end = std::min(text.find("[FACTORY <", from + 1), text.size());
            const std::string line = shown_log(text.substr(from, end - from));
            if (line.starts_with("<facmsg_send> "))
                sent_line = line;
            else
                event(line);
        }
    }
    /* The line that tells of an event. */
    const story_line &event(const std::string &text)
    {
        if (text[0] != '<')
            fflush(stdout);
        if (at == lines.size() || lines[at].text.substr(lines[at].level() > 0 ? 2 : 0) != text)
            differ(text);
        const story_line &line = lines[at];
        if (--left == 0)
            go_to(at + 1);
        return line;
    }
    int called(const driver_call &call)
    {
        const story_line &line = event(call.text);
        std::vector<uint64_t> values;
        std::istringstream words(line.outputs);
        for (std::string word; std::getline(words, word, ',') && word != "-";)
            values.push_back(std::stoull(word));
        if (line.result == 0 || !values.empty())
            call.write(values);
        return line.result;
    }
    /* ask TYPE NAME PAYLOAD, and then reply TYPE PAYLOAD */
    void ask(const std::vector<std::string> &words)
    {
        go_to(at + 1);
        sent_line.clear();
        const std::string reply = ask_dispatcher(static_cast<uint32_t>(std::stoul(words[1])), from_hex(words.at(3)),
                                                 words[2] == "flow" ? facmsg_flow_pressure_fun : facmsg_lib_test_main);
        fflush(stdout);
        if (at == lines.size() || !lines[at].text.starts_with("reply "))
            differ(reply.empty() ? "no reply" : "a reply");
        const auto told = lines[at].words();
        if (told.at(1) != "none")
            check_reply(told[1], from_hex(told.at(2)), reply);
        else if (!reply.empty())
            differ("a reply");
        go_to(at + 1);
    }
    static std::string from_hex(const std::string &text)
    {
        const auto bytes = long_bytes(text, text.size() / 2);
        return {bytes.begin(), bytes.end()};
    }
    void check_reply(const std::string &type, const std::string &payload, const std::string &reply)
    {
        const std::string size = std::to_string(payload.size()),
                          line = "<facmsg_send> Msg type:" + type + ", payload_size:" + size + ".",
                          expected = frame(static_cast<uint32_t>(std::stoul(type)),
                                           static_cast<uint32_t>(payload.size()), payload);
        for (size_t i = 0; i < std::min(expected.size(), reply.size()); i++)
            if (expected[i] != reply[i])
                differ("byte " + std::to_string(static_cast<int>(i) - 8) + " of the payload is " +
                       short_hex(&reply[i], 1) + ", not " + short_hex(&expected[i], 1));
        if (reply.size() != expected.size() || sent_line != (facmsg_dbg > 1 ? line : ""))
            differ(std::to_string(reply.size()) + " bytes " + sent_line);
    }

    const std::vector<story_line> &lines;
    const int level, report;
    size_t at = 0;
    int left = 0;
    std::string sent_line;
    fake_driver driver;
    log_capture log;
};

/* What went otherwise, or "". */
std::string play_apart(const story &told, int level)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        player(told, level, ends[1]).play();
        exit(0);
    }
    close(ends[1]);
    const std::string error = read_to_end(ends[0]);
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    return error.empty() && status != 0 ? "the library died, status " + std::to_string(status) : error;
}

struct story_test : testing::Test {
    explicit story_test(const story &of) : told(of) {}
    void TestBody() override
    {
        std::vector<int> levels = {2, 1};
        if (told.lines[0].text.starts_with("at level "))
            levels = {told.lines[0].text.back() - '0'};
        for (const int level : levels)
            if (const std::string error = play_apart(told, level); !error.empty())
                FAIL() << error;
    }
    const story &told;
};

std::vector<story> read_stories(const char *path)
{
    std::vector<story> stories;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::istringstream cells(line);
        story_line told = {};
        std::getline(cells, told.place, '\t');
        if (told.place == "story")
            std::getline(cells, stories.emplace_back().name);
        else if (cells >> told.count >> told.result >> told.outputs && std::getline(cells.ignore(), told.text))
            stories.back().lines.push_back(told);
    }
    return stories;
}

} // namespace

int main(int count, char **arguments)
{
    testing::InitGoogleTest(&count, arguments);
    static const auto &stories =
        *new auto(read_stories(arguments[count - 1])); /* never cleared away: children end often */
    for (const auto &told : stories)
        testing::RegisterTest("story", told.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [&told]() -> testing::Test * { return new story_test(told); });
    return RUN_ALL_TESTS() != 0 || stories.empty();
}
