/* SPDX-License-Identifier: MIT
 *
 * A host's driver table whose functions all lead to one place, as text and outputs: what a call does is the test's.
 */
#ifndef TESTS_SUPPORT_FAKE_DRIVER_H
#define TESTS_SUPPORT_FAKE_DRIVER_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "facmsg.h"

/* Where a call writes: `count` values of `size` bytes each. */
struct driver_output {
    void *to;
    size_t size, count;
};

struct driver_call {
    std::string slot, text; /* "slot(1,2)": the words, MAC addresses and frames handed over, without outputs */
    uint32_t port;          /* or phy id of a frame; 0 without */
    std::vector<driver_output> outputs;
    /* Writes these values to the outputs in turn, and 0 where there are no more. */
    void write(const std::vector<uint64_t> &values) const;
};

class fake_driver
{
  public:
    /* Fills the library's table and empties the trace. One at a time. */
    fake_driver();
    ~fake_driver();
    fake_driver(const fake_driver &) = delete;

    /* What a call does, after it was traced; at first every call succeeds and writes zeros. */
    std::function<int(const driver_call &)> answer;
};

/* A table of functions that lead to the present fake_driver. */
vexa_diag_drv fake_table();
/* Takes a function out of the library's table; false for a name that no slot has. */
bool empty_slot(const std::string &name);
/* The name of the slot that has this function in the fake table, or "". */
std::string slot_of(uintptr_t function);

/* Bytes in hex; what repeats up to the end stands once, in brackets: "0123[00ff]". And back, to that many bytes. */
std::string short_hex(const void *bytes, size_t size);
std::vector<uint8_t> long_bytes(const std::string &hex, size_t size);

#endif
