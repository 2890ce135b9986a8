/* SPDX-License-Identifier: MIT
 *
 * The station beside a service that ends, hangs or is not there, on terminals and interrupted.
 */
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <signal.h>
#include <unistd.h>

#include "facmsg_protocol.h"
#include "programs.h"

static const std::string NAME = "facmsg-station: ", GOES_ON = "; the service goes on with the request it has begun\n";

TEST(unreachable, only_its_user_may_connect)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    const slow_service service;
    std::filesystem::permissions(service.folder.socket(), std::filesystem::perms{0600});
    EXPECT_EQ(run({"factory-mode", "--directory", service.folder.path}, 65534),
              (finished{3, "",
                        NAME + "factory-mode: permission denied on tmp/.factory_ssa_socket in directory '" +
                            service.folder.path + "'; only the user that runs the host may connect\n"}));
}

/* It says nothing about the request or the unit. */
TEST(unreachable, a_host_that_ends_is_told_as_that)
{
    for (const auto &[begun, anew] : {std::pair{true, false}, {false, false}, {true, true}}) {
        const temporary_folder folder;
        auto host = std::make_optional<listener>(folder);
        const running_station station({"factory-mode", "--directory", folder.path});
        std::string shown;
        if (begun) {
            host->take_request();
            usleep(500'000); /* the station has looked at its request meanwhile */
        } else {
            shown = read_to(station.err, "f"); /* it waits */
        }
        std::optional<listener> next;
        if (anew && std::filesystem::remove(folder.socket()))
            next.emplace(folder);
        host.reset();
        EXPECT_EQ(wait_for(station.pid), 3);
        shown += read_to(station.err, THE_END);
        const std::string sentence =
            (begun ? "the host ended while the request was at work" : "the host ended before it began the request") +
            (anew ? "; it has been started anew since\n"
                  : "; nobody listens on tmp/.factory_ssa_socket in directory '" + folder.path + "' any more\n");
        EXPECT_TRUE(shown.ends_with(sentence)) << shown;
    }
}

TEST(interruption, and_a_timeout_leave_the_service_to_its_work)
{
    const std::string ends[] = {NAME + "packet: no reply within 1 s" + GOES_ON, NAME + "packet: interrupted" + GOES_ON};
    for (const int number : {0, SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        slow_service service;
        const running_station station({"packet", "--directory", service.folder.path, "--timeout", number ? "60" : "1"});
        service.socket.take_request();
        kill(station.pid, number);
        EXPECT_EQ(wait_for(station.pid), number ? 128 + number : 3);
        EXPECT_EQ(read_to(station.err, THE_END), ends[number != 0]);
    }
}

/* What a terminal shows of a test of one port. */
static std::string shown(const words &options, unsigned short columns = 0)
{
    const fake_service service(reply_of<packet_test_record>(0, [](packet_test_record &reply) {
        reply.port_count = 1;
        reply.port_results[0] = FACMSG_PORT_RESULT(1, FACMSG_PORT_OK);
    }));
    words arguments{"packet", "--directory", service.folder.path};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run_on_terminal(arguments, "", {}, columns).out;
}

TEST(terminal, progress_and_colour_only_where_they_can_be_seen)
{
    const std::string progress = "packet: 0 s elapsed, about 20 s expected, up to 160 s if ports fail";
    setenv("NO_COLOR", "", 1); /* as good as none */
    const std::string lively = shown({});
    for (const std::string &part : {progress, std::string("\r\033[KPacket test of unit 0"), /* the line is taken away */
                                    std::string("\033[32mPASS\033[0m  1 port")})
        EXPECT_NE(lively.find(part), std::string::npos) << part << "\n" << lively;
    EXPECT_NE(shown({}, 50).find("\033[K" + progress.substr(0, 49) + "\r"), std::string::npos);
    setenv("NO_COLOR", "1", 1);
    const std::string quiet = shown({"--no-progress"});
    EXPECT_TRUE(quiet.find('\033') == quiet.npos && quiet.find("PASS  1 port tested") != quiet.npos) << quiet;
    setenv("TERM", "dumb", 1);
    unsetenv("NO_COLOR");
    const std::string dumb = shown({});
    EXPECT_EQ(dumb.find('\033'), std::string::npos) << dumb;
    EXPECT_EQ(dumb.find("packet: about 20 s expected, up to 160 s if ports fail\r\nPacket test of unit 0"), 0u) << dumb;
}

TEST(terminal, upgrade_waits_for_a_yes)
{
    const temporary_folder folder;
    const std::tuple<std::string, int, const char *> cases[] = {
        {"n\n", 3, " n\r\nfacmsg-station: poe-upgrade: not confirmed; nothing was sent"},
        {"\x04", 3, " \r\nfacmsg-station: poe-upgrade: not confirmed; nothing was sent"},
        {"yes\n", 3, "there is no socket"},
        {END_BY + std::to_string(SIGINT), 130, "[y/N] \r\n"}};
    for (const auto &[answer, code, sentence] : cases) {
        const finished end = run_on_terminal({"--directory", folder.path, "poe-upgrade"}, "", {{"[y/N] ", answer}});
        EXPECT_EQ(end.code, code) << end;
        EXPECT_NE(end.out.find(sentence), std::string::npos) << end;
    }
}

TEST(terminal, shows_how_long_others_are_waited_for)
{
    const slow_service busy;
    const finished end = run_on_terminal({"--directory", busy.folder.path, "packet"}, "",
                                         {{"packet: waiting, 1 s\r", END_BY + std::to_string(SIGINT)}});
    EXPECT_EQ(end.code, 130);
    EXPECT_EQ(end.out.find("packet: 4 s elapsed"), std::string::npos);
    EXPECT_NE(end.out.find("\r\033[Kfacmsg-station: packet: interrupted; the service had not begun the request yet,"
                           "\r\n    and will do it once it is free\r\n"),
              std::string::npos);
}
