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

/* A station at work, with its outputs at the other end of pipes. */
struct running_station {
    int out[2], err[2]; /* the first is read; -1: closed */
    pid_t pid;
    running_station(const words &arguments);
    ~running_station();
    void close_outputs();
    running_station(const running_station &) = delete;
};
/* Reads an output up to a text, or to the end. */
std::string read_to(const int (&output)[2], const std::string &text);
inline const std::string THE_END(1, '\0');

/* Gives each answer when its question is shown; an answer of END_BY and a signal's number ends the program with it. */
struct exchange {
    std::string question, answer;
};
constexpr char END_BY = '\x01';
/* Runs the station with a terminal for its outputs, and for its input when something is typed: ahead, before the start,
 * or as an answer. Its out is all that the terminal showed. */
finished run_on_terminal(const words &arguments, const std::string &typed_ahead = "",
                         const std::vector<exchange> &talk = {}, unsigned short columns = 0);

struct temporary_folder {
    std::string path;
    temporary_folder(); /* with tmp/ in it */
    ~temporary_folder();
    temporary_folder(const temporary_folder &) = delete;
    std::string socket() const;
};

/* facmsg-simhost with a board, and changes to its file, ready for requests. */
struct simulated_switch {
    temporary_folder folder;
    pid_t pid;
    int console_fd;
    simulated_switch(const std::string &board, const std::string &changes = "", const words &options = {});
    ~simulated_switch();
    finished run(const words &arguments) const; /* the station in the switch's folder */
};

/* A listening socket at the service's place. It is gone, but its file is not, when this ends. */
struct listener {
    int fd, connection = -1;
    listener(const temporary_folder &folder);
    ~listener();
    listener(const listener &) = delete;
    std::string take_request(); /* the payload; closes the connection of the one before */
    void answer(const std::string &reply) const;
};

/* A service that takes a request, and answers it, when a test says so. */
struct slow_service {
    temporary_folder folder;
    listener socket{folder};
};

std::string reply_bytes(uint32_t type, const void *record, uint32_t size);

/* Makes the bytes of a reply from the request's payload. */
using responder = std::function<std::string(const std::string &payload)>;

/* The request's payload as a record, changed by a test and sent back. */
template <class Record> responder reply_of(uint32_t type, const std::function<void(Record &)> &change)
{
    return [=](const std::string &payload) {
        Record record;
        std::memcpy(&record, payload.data(), sizeof(record));
        change(record);
        return reply_bytes(type, &record, sizeof(record));
    };
}

/* Takes one request and answers it; further connections find nobody. */
struct fake_service : slow_service {
    std::thread server;
    fake_service(const responder &answer);
    ~fake_service();
    finished run(const words &arguments) const;
};

#endif
