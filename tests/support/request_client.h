/* SPDX-License-Identifier: MIT
 *
 * The station's end of a connection, byte by byte, and the service at the other end.
 */
#ifndef TESTS_SUPPORT_REQUEST_CLIENT_H
#define TESTS_SUPPORT_REQUEST_CLIENT_H

#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include "facmsg.h"

/* A frame as bytes. */
std::string frame(uint32_t type, uint32_t payload_size, const std::string &payload = "");

template <class Record> std::string bytes_of(const Record &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof(record)};
}

/* A new folder with a tmp/ in it: entered now, removed at the end. */
struct temporary_folder {
    temporary_folder();
    ~temporary_folder();
    temporary_folder(const temporary_folder &) = delete;
    char path[32] = "/tmp/facmsg_test_XXXXXX";
};

/* Registers the fake driver's table in a folder of the service's own, and waits until the service answers; later calls
 * only go to that folder. */
void start_service();
bool wait_for_service();

/* Everything up to the end of a connection or pipe. */
std::string read_to_end(int fd);

class request_client
{
  public:
    request_client(); /* connects; fd is -1 when it cannot */
    ~request_client()
    {
        close(fd);
    }
    request_client(const request_client &) = delete;

    request_client &send(const std::string &bytes)
    {
        ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        return *this;
    }
    request_client &end() /* nothing more will be sent */
    {
        shutdown(fd, SHUT_WR);
        return *this;
    }
    std::string reply() /* everything up to the end of the connection */
    {
        return read_to_end(fd);
    }

    int fd;
};

/* Sends a whole request and reads the reply: over the socket to the service, or straight into a handler. */
std::string ask_service(const std::string &request);
using request_handler = int (*)(int fd, facmsg_request *request);
std::string ask_dispatcher(uint32_t type, const std::string &payload, request_handler handler = facmsg_lib_test_main);

#endif
