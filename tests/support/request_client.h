/* SPDX-License-Identifier: MIT
 *
 * The station's end of a connection, byte by byte, and the service at the other end.
 */
#ifndef TESTS_SUPPORT_REQUEST_CLIENT_H
#define TESTS_SUPPORT_REQUEST_CLIENT_H

#include <cstdint>
#include <string>

#include "facmsg.h"

/* A frame as bytes. */
std::string frame(uint32_t type, uint32_t payload_size, const std::string &payload = "");

template <class Record> std::string bytes_of(const Record &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof(record)};
}

/* Goes to a new folder that has a tmp/ in it; the process's first call only. */
void enter_temporary_folder();

/* Another such folder, for a test that binds the service's path itself; back at the end. */
struct side_folder {
    side_folder();
    ~side_folder();
    side_folder(const side_folder &) = delete;
};

/* In such a folder: registers the fake driver's table and waits until the service answers. First call only. */
void start_service();
bool wait_for_service();

class request_client
{
  public:
    request_client(); /* connects; fd is -1 when it cannot */
    ~request_client();
    request_client(const request_client &) = delete;

    request_client &send(const std::string &bytes);
    request_client &end(); /* nothing more will be sent */
    std::string reply();   /* everything up to the end of the connection */

    int fd;
};

/* Sends a whole request and reads the reply: over the socket to the service, or straight into the dispatcher. */
std::string ask_service(const std::string &request);
std::string ask_dispatcher(uint32_t type, const std::string &payload);

#endif
