/* SPDX-License-Identifier: MIT
 *
 * The real programs under test, each in a temporary folder whose name has blanks, and a service that says what a test
 * wants.
 */
#ifndef TESTS_STATION_PROGRAMS_H
#define TESTS_STATION_PROGRAMS_H

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

using words = std::vector<std::string>;

struct finished {
    int code;
    std::string out, err = {};
    bool operator==(const finished &) const = default;
};
std::ostream &operator<<(std::ostream &stream, const finished &end);

/* Starts a program with its standard output, error and input (-1: none); as another user when user is not 0. */
pid_t start(const words &command, int out, int err, uid_t user = 0, int in = -1);
/* Waits for its end: the exit code, or 1000 + the signal that ended it. */
int wait_for(pid_t pid);

/* The station's command line. */
words station(const words &arguments);
/* Runs a program, or the station, to its end. */
finished run_command(const words &command, uid_t user = 0);
finished run(const words &arguments, uid_t user = 0);
/* The same with a terminal for both outputs, and for the input when something is typed; out is all that the terminal
 * showed. */
finished run_on_terminal(const words &arguments, const std::string &typed = "", unsigned short columns = 0);

/* On a terminal too: gives each answer when its question is shown. What is typed ahead is there before the start. */
struct exchange {
    std::string question, answer;
};
finished talk_on_terminal(const words &arguments, const std::vector<exchange> &talk,
                          const std::string &typed_ahead = "");

struct temporary_folder {
    std::string path;
    temporary_folder(); /* with tmp/ in it */
    ~temporary_folder();
    temporary_folder(const temporary_folder &) = delete;
    std::string socket() const;
};

/* facmsg-simhost, ready for requests. */
struct simulated_switch {
    temporary_folder folder;
    pid_t pid;
    int console_fd;
    simulated_switch(const std::string &board, const words &options = {});
    ~simulated_switch();
    finished run(const words &arguments) const; /* the station in the switch's folder */
};

/* A listening socket at the service's place. It is gone, but its file is not, when this ends. */
struct listener {
    int fd;
    listener(const temporary_folder &folder);
    ~listener();
    listener(const listener &) = delete;
};

/* Makes the bytes of a reply from the request's payload. */
using responder = std::function<std::string(const std::string &payload, int connection)>;

/* The request's payload as a record, changed by a test and sent back. */
template <class Record> responder reply_of(uint32_t type, const std::function<void(Record &)> &change)
{
    return [=](const std::string &payload, int) {
        Record record;
        std::memcpy(&record, payload.data(), sizeof(record));
        change(record);
        const uint32_t header[2] = {type, sizeof(record)};
        return std::string(reinterpret_cast<const char *>(header), sizeof(header)) +
               std::string(reinterpret_cast<const char *>(&record), sizeof(record));
    };
}

/* Takes one request and answers it; further connections find nobody. */
struct fake_service {
    temporary_folder folder;
    listener socket{folder};
    std::thread server;
    fake_service(const responder &answer);
    ~fake_service();
    finished run(const words &arguments) const;
};

#endif
