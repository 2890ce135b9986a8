/* SPDX-License-Identifier: MIT */
#include "programs.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "common/file.h"

/* The terminals of tests, whatever this one is. */
static const int TERMINAL_NAME = setenv("TERM", "xterm", 1);

std::ostream &operator<<(std::ostream &stream, const finished &end)
{
    return stream << "exit " << end.code << "\nstdout:\n" << end.out << "\nstderr:\n" << end.err;
}

static words emulated(const std::string &program, const words &arguments)
{
    words command;
    std::istringstream emulator(EMULATOR);
    for (std::string word; std::getline(emulator, word, '|');)
        command.push_back(word);
    command.push_back(program);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

pid_t start(const words &command, int out, int err, uid_t user, int in)
{
    std::vector<char *> arguments;
    for (const std::string &word : command)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(in < 0 ? open("/dev/null", O_RDONLY) : in, STDIN_FILENO);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        if (user == 0 || setuid(user) == 0)
            execvp(arguments[0], arguments.data());
        _exit(127);
    }
    return pid;
}

int wait_for(pid_t pid)
{
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

static std::string read_all(int fd)
{
    std::string text;
    char part[4096];
    for (ssize_t size; (size = read(fd, part, sizeof(part))) > 0;)
        text.append(part, static_cast<size_t>(size));
    close(fd);
    return text;
}

/* A file without a name: takes any amount of output without a reader. */
static int output_file()
{
    return open(std::filesystem::temp_directory_path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
}

static std::string written_to(int file)
{
    lseek(file, 0, SEEK_SET);
    return read_all(file);
}

words station(const words &arguments)
{
    return emulated(STATION_PROGRAM, arguments);
}

finished run_command(const words &command, uid_t user)
{
    const int out = output_file();
    const int err = output_file();
    const int code = wait_for(start(command, out, err, user));
    return {code, written_to(out), written_to(err)};
}

/* Runs a copy, because other users may not be allowed into the folder that the project lies in. */
static finished run_as(uid_t user, const words &arguments)
{
    const temporary_folder copies;
    for (const std::filesystem::path file : {STATION_PROGRAM, STATION_LIBRARY})
        std::filesystem::copy(file, copies.path);
    words command = emulated(copies.path / std::filesystem::path(STATION_PROGRAM).filename(), arguments);
    command.insert(command.begin(), {"env", "LD_LIBRARY_PATH=" + copies.path});
    return run_command(command, user);
}

finished run(const words &arguments, uid_t user)
{
    return user != 0 ? run_as(user, arguments) : run_command(station(arguments), 0);
}

running_station::running_station(const words &arguments)
{
    EXPECT_EQ(pipe2(out, O_CLOEXEC) + pipe2(err, O_CLOEXEC), 0);
    pid = start(station(arguments), out[1], err[1]);
    close(out[1]);
    close(err[1]);
}

running_station::~running_station()
{
    close_outputs();
}

void running_station::close_outputs()
{
    close(std::exchange(out[0], -1));
    close(std::exchange(err[0], -1));
}

std::string read_to(const int (&output)[2], const std::string &text)
{
    std::string shown;
    for (char letter; shown.find(text) == shown.npos && read(output[0], &letter, 1) == 1;)
        shown += letter;
    return shown;
}

static void give(int terminal, const std::string &answer, pid_t pid)
{
    if (answer.starts_with(END_BY))
        kill(pid, std::stoi(answer.substr(1)));
    else
        EXPECT_EQ(write(terminal, answer.data(), answer.size()), ssize_t(answer.size()));
}

/* Reads until the other side is closed, and answers questions as they come. */
static std::string talk_to(int terminal, const std::vector<exchange> &talk, pid_t pid)
{
    std::string shown;
    size_t past = 0;
    auto next = talk.begin();
    char part[4096];
    pollfd output{terminal, POLLIN, 0};
    for (ssize_t size; (size = read(terminal, part, sizeof(part))) > 0;) {
        shown.append(part, static_cast<size_t>(size));
        for (size_t at; next != talk.end() && (at = shown.find(next->question, past)) != std::string::npos; ++next) {
            past = at + next->question.size();
            give(terminal, next->answer, pid);
        }
        if (poll(&output, 1, 30'000) == 0)
            kill(pid, SIGKILL); /* it waits for an answer that no one has */
    }
    EXPECT_TRUE(next == talk.end()) << "was not asked: " << next->question;
    return shown;
}

finished run_on_terminal(const words &arguments, const std::string &typed_ahead, const std::vector<exchange> &talk,
                         unsigned short columns)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    grantpt(terminal);
    unlockpt(terminal);
    const int screen = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const winsize size{0, columns, 0, 0};
    ioctl(terminal, TIOCSWINSZ, &size);
    give(terminal, typed_ahead, 0);
    const pid_t pid = start(station(arguments), screen, screen, 0, typed_ahead.empty() && talk.empty() ? -1 : screen);
    close(screen);
    const std::string shown = talk_to(terminal, talk, pid);
    close(terminal);
    return {wait_for(pid), shown};
}

temporary_folder::temporary_folder()
{
    std::string pattern = std::filesystem::temp_directory_path() / "test station XXXXXX";
    path = mkdtemp(pattern.data());
    std::filesystem::permissions(path, std::filesystem::perms{0755});
    std::filesystem::create_directory(path + "/tmp");
}

temporary_folder::~temporary_folder()
{
    std::filesystem::remove_all(path);
}

std::string temporary_folder::socket() const
{
    return path + "/tmp/.factory_ssa_socket";
}

static finished run_in(const temporary_folder &folder, words arguments)
{
    arguments.insert(arguments.begin(), {"--directory", folder.path});
    return run(arguments);
}

simulated_switch::simulated_switch(const std::string &board, const std::string &changes, const words &options)
{
    const std::string file = folder.path + "/board.toml";
    std::ofstream(file) << "base = '" BOARDS "/" << board << ".toml'\nname = 'changed'\n" << changes;
    words arguments{"--board", file, "--directory", folder.path};
    arguments.insert(arguments.end(), options.begin(), options.end());
    int console[2];
    EXPECT_EQ(pipe2(console, O_CLOEXEC), 0);
    pid = start(emulated(SIMHOST_PROGRAM, arguments), console[1], STDERR_FILENO);
    close(console[1]);
    std::string shown;
    for (char letter; shown.find("ready:") == std::string::npos && read(console[0], &letter, 1) == 1;)
        shown += letter;
    EXPECT_NE(shown.find("ready:"), std::string::npos) << shown;
    console_fd = console[0];
}

simulated_switch::~simulated_switch()
{
    kill(pid, SIGTERM);
    EXPECT_EQ(wait_for(pid), 0);
    close(console_fd);
}

finished simulated_switch::run(const words &arguments) const
{
    return run_in(folder, arguments);
}

listener::listener(const temporary_folder &folder) : fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_un address = common::socket_address(folder.socket());
    EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
    EXPECT_EQ(listen(fd, 8), 0);
}

listener::~listener()
{
    close(connection);
    close(fd);
}

std::string listener::take_request()
{
    close(std::exchange(connection, accept4(fd, nullptr, nullptr, SOCK_CLOEXEC)));
    uint32_t header[2];
    EXPECT_EQ(recv(connection, header, sizeof(header), MSG_WAITALL), ssize_t{sizeof(header)});
    std::string payload(header[1], '\0');
    EXPECT_EQ(recv(connection, payload.data(), payload.size(), MSG_WAITALL), ssize_t(payload.size()));
    return payload;
}

void listener::answer(const std::string &reply) const
{
    EXPECT_EQ(send(connection, reply.data(), reply.size(), MSG_NOSIGNAL), ssize_t(reply.size()));
}

std::string reply_bytes(uint32_t type, const void *record, uint32_t size)
{
    const uint32_t header[2] = {type, size};
    return std::string(reinterpret_cast<const char *>(header), sizeof(header)) +
           std::string(static_cast<const char *>(record), size);
}

fake_service::fake_service(const responder &answer)
    : server([this, answer] {
          socket.answer(answer(socket.take_request()));
          close(std::exchange(socket.connection, -1));
      })
{
}

fake_service::~fake_service()
{
    server.join();
}

finished fake_service::run(const words &arguments) const
{
    return run_in(folder, arguments);
}
