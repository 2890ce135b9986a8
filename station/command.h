/* SPDX-License-Identifier: MIT
 *
 * A subcommand as a row: its request type, its options, its payload and how to read the reply. Everything else (the
 * command line, the help, the list, the exchange, the output) follows from the row.
 */
#ifndef STATION_COMMAND_H
#define STATION_COMMAND_H

#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "outcome.h"

namespace station
{

/* The command line is wrong. what() is one line: the option, the value found, and what is allowed. */
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* One request on its way out, and later its reply: the service answers over the payload. */
struct request {
    uint32_t type;
    std::vector<uint8_t> payload;
};

/* A readable name for a code. */
struct choice {
    const char *name;
    uint32_t code;
};

enum class arity {
    flag, /* no value */
    one,  /* one value; a required one when the option is positional */
    any   /* any number of values, handed over joined by blanks */
};

struct option;
void set_word(request &sent, const option &field, const std::string &value);

/* One option of a subcommand. As a rule it fills one 32-bit word of the payload. */
struct option {
    const char *name; /* "--speed", or "LEVEL" for a positional one */
    const char *help;
    arity values = arity::one;
    size_t offset = 0;   /* of the word in the payload */
    int64_t initial = 0; /* the word when the option is not given */
    int64_t least = 0;   /* the range of numbers that may be given */
    int64_t most = std::numeric_limits<uint32_t>::max();
    std::span<const choice> choices = {}; /* names that may be given instead */
    void (*set)(request &sent, const option &field, const std::string &value) = set_word;
};

/* How long a request takes, in seconds. */
struct duration {
    int typical_s;     /* on a healthy 28-port switch; 0: not known */
    int longest_s = 0; /* on a 52-port switch whose ports fail and are tried again; 0: no longer than typical */
};

struct command {
    const char *name;
    const char *help;
    bool fixed_type;       /* false: the type and the size are options of the command, or it sends nothing */
    uint32_t type;         /* of the request */
    uint32_t payload_size; /* bytes of the request's payload and of the reply's */
    std::span<const option> options;
    duration expected;
    /* Reads a reply of the request's size. Null for a command that sends nothing. */
    outcome (*decode)(const request &sent, const std::vector<uint8_t> &reply);
};

/* All subcommands, in the order of the list. */
std::span<const command> commands();

/* The request before any option was given. */
request empty_request(const command &row);

/* What may be given for an option, in words. */
std::string allowed_values(const option &field);
/* The name of a code, or the code itself when it has none. */
std::string name_of(std::span<const choice> choices, uint32_t code);
/* The value for an option in its word's form. Throws usage_error. */
int64_t parse_value(const option &field, const std::string &value);

/* Whether an option is a word of the payload that the service must send back as it was. */
bool is_payload_word(const option &field);

uint32_t word_at(const std::vector<uint8_t> &payload, size_t offset);

/* The reply as the record that its request type says; only called with payloads of the record's size. */
template <class Record> Record record_of(const std::vector<uint8_t> &payload)
{
    Record record;
    std::memcpy(&record, payload.data(), sizeof(record));
    return record;
}

} // namespace station

#endif
