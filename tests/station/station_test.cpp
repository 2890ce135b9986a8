/* SPDX-License-Identifier: MIT
 *
 * The station beside a service that ends, hangs or is not there, on terminals and interrupted.
 */
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include "facmsg_protocol.h"
#include "programs.h"

static const std::string who = "facmsg-station: ";

TEST(unreachable, each_reason_has_its_sentence)
{
    const temporary_folder folder;
    const std::string where = "tmp/.factory_ssa_socket in directory '" + folder.path + "'";
    const auto expect = [&](const std::string &reason, uid_t user = 0) {
        EXPECT_EQ(run({"factory-mode", "--directory", folder.path}, user),
                  (finished{3, "", who + "factory-mode: " + reason + "\n"}));
    };
    EXPECT_EQ(run({"factory-mode", "--directory", folder.path + "/none"}),
              (finished{3, "",
                        who + "factory-mode: cannot enter directory '" + folder.path + "/none': no such directory\n"}));
    expect("there is no socket " + where + "; is the host running with that working directory?");
    std::ofstream(folder.socket()) << "not a socket";
    expect(where + " is not a socket; is the host running with that working directory?");
    std::filesystem::remove(folder.socket());
    {
        const listener owner_only(folder);
        std::filesystem::permissions(folder.socket(), std::filesystem::perms{0600});
        if (geteuid() == 0) /* only root can become somebody else */
            expect("permission denied on " + where + "; only the user that runs the host may connect", 65534);
    }
    expect("nobody listens on " + where + "; the host has gone and left its socket file behind");
}

/* It says nothing about the request or the unit. */
TEST(unreachable, a_host_that_ends_is_told_as_that)
{
    const std::string then = "; nobody listens on tmp/.factory_ssa_socket in directory '";
    for (const bool begun : {true, false}) {
        const temporary_folder folder;
        auto host = std::make_optional<listener>(folder);
        int err[2];
        ASSERT_EQ(pipe2(err, O_CLOEXEC), 0);
        const pid_t pid = start(station({"factory-mode", "--directory", folder.path}), STDOUT_FILENO, err[1]);
        close(err[1]);
        int connection = -1;
        if (begun) {
            connection = accept4(host->fd, nullptr, nullptr, SOCK_CLOEXEC);
            char request[12];
            EXPECT_EQ(recv(connection, request, sizeof(request), MSG_WAITALL), ssize_t{sizeof(request)});
            usleep(500'000); /* the station has looked at its request meanwhile */
        } else {
            char waiting;
            EXPECT_EQ(read(err[0], &waiting, 1), 1);
        }
        host.reset();
        close(connection);
        EXPECT_EQ(wait_for(pid), 3);
        char told[1000] = "";
        EXPECT_GT(read(err[0], told, sizeof(told) - 1), 0);
        const std::string sentence =
            (begun ? "the host ended while the request was at work" : "the host ended before it began the request") +
            then + folder.path + "' any more\n";
        EXPECT_TRUE(std::string(told).ends_with(sentence)) << told;
        close(err[0]);
    }
}

TEST(interruption, ends_the_station_at_once_and_says_what_goes_on)
{
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        std::promise<void> received;
        const fake_service service([&](const std::string &, int connection) {
            received.set_value();
            char more;
            EXPECT_EQ(recv(connection, &more, 1, 0), 0); /* until the station has gone */
            return std::string();
        });
        int err[2];
        ASSERT_EQ(pipe2(err, O_CLOEXEC), 0);
        const pid_t pid = start(station({"packet", "--directory", service.folder.path}), STDOUT_FILENO, err[1]);
        close(err[1]); /* so that reading ends with the station */
        received.get_future().wait();
        kill(pid, number);
        EXPECT_EQ(wait_for(pid), 128 + number);
        char sentence[200] = "";
        EXPECT_GT(read(err[0], sentence, sizeof(sentence) - 1), 0);
        EXPECT_EQ(sentence, who + "packet: interrupted; the service goes on with the request it has begun\n");
        close(err[0]);
    }
}

TEST(timeout, leaves_the_service_to_its_work)
{
    const fake_service service([&](const std::string &, int connection) {
        char more;
        EXPECT_EQ(recv(connection, &more, 1, 0), 0); /* until the station has gone */
        return std::string();
    });
    EXPECT_EQ(
        service.run({"packet", "--timeout", "1"}),
        (finished{3, "", who + "packet: no reply within 1 s; the service goes on with the request it has begun\n"}));
}

TEST(terminal, progress_and_colour_only_where_they_can_be_seen)
{
    const std::string progress = "packet: 0 s elapsed, about 20 s expected, up to 160 s if ports fail";
    const std::string green = "\033[32mPASS\033[0m  1 port";
    const auto shown = [](const words &options, unsigned short columns = 0) {
        const fake_service service(reply_of<packet_test_record>(0, [](packet_test_record &reply) {
            reply.port_count = 1;
            reply.port_results[0] = FACMSG_PORT_RESULT(1, FACMSG_PORT_OK);
        }));
        words arguments{"packet", "--directory", service.folder.path};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run_on_terminal(arguments, "", columns).out;
    };
    unsetenv("NO_COLOR");
    const std::string lively = shown({});
    EXPECT_NE(lively.find(progress), std::string::npos) << lively;
    EXPECT_NE(lively.find("\r\033[KPacket test of unit 0"), std::string::npos) << lively; /* the line is taken away */
    EXPECT_NE(lively.find(green), std::string::npos) << lively;
    setenv("NO_COLOR", "1", 1);
    const std::string quiet = shown({"--no-progress"});
    EXPECT_EQ(quiet.find('\033'), std::string::npos) << quiet;
    EXPECT_NE(quiet.find("PASS  1 port tested"), std::string::npos) << quiet;
    const std::string narrow = shown({}, 50);
    EXPECT_NE(narrow.find("\033[K" + progress.substr(0, 49) + "\r"), std::string::npos) << narrow;
    setenv("TERM", "dumb", 1);
    unsetenv("NO_COLOR");
    const std::string dumb = shown({});
    EXPECT_EQ(dumb.find('\033'), std::string::npos) << dumb;
    EXPECT_EQ(dumb.find("packet: about 20 s expected, up to 160 s if ports fail\r\nPacket test of unit 0"), 0u) << dumb;
}
