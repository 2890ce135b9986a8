/* SPDX-License-Identifier: MIT
 *
 * A subcommand as a row: its request type, its options, its payload and how to read the reply. Everything else (the
 * command line, the help, the list, the exchange, the output) follows from the row.
 */
#ifndef STATION_COMMAND_H
#define STATION_COMMAND_H

#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
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
    std::string subcommand = {}; /* where it was given; empty when there is none, or none yet */
};

/* One request on its way out, and later its reply: the service answers over the payload. */
struct request {
    uint32_t type;
    std::vector<uint8_t> payload;
    std::map<std::string, std::string> own = {}; /* options that stay with the station, and their values */
    std::set<std::string> option_names = {};     /* options that fill a word and were given */
    std::vector<uint8_t> data = {};              /* what a transfer of several requests is to move */
};

/* A readable name for a code. */
struct choice {
    const char *name;
    uint32_t code;
};

enum class arity {
    flag, /* no value */
    one,  /* one number or name; a required one when the option is positional */
    text, /* one value of any kind */
    any   /* any number of values, handed over joined by blanks */
};

struct option;
void set_word(request &sent, const option &field, const std::string &value);
/* For an option that stays with the station: keeps the value as it is, or as a number or list that is valid. */
void set_own(request &sent, const option &field, const std::string &value);
void set_own_number(request &sent, const option &field, const std::string &value);
void set_own_list(request &sent, const option &field, const std::string &value);

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
    bool hex = false;                     /* numbers are hexadecimal, with or without 0x */
    void (*set)(request &sent, const option &field, const std::string &value) = set_word;
    int64_t multiple = 1;             /* numbers are multiples of this */
    const char *not_beside = nullptr; /* an option that leaves no sense to this one */
    const char *limited = nullptr;    /* the column of the reply whose greatest value this is, or ... */
    bool least_value = false;         /* ... whose least */
    bool judges_unasked = false;      /* when it is not given there is a limit none the less */
};

/* How long a request takes, in seconds. */
struct duration {
    int typical_s;     /* on a healthy 28-port switch; 0: not known */
    int longest_s = 0; /* on a 52-port switch whose ports fail and are tried again; 0: no longer than typical */
};

/* Sends one request of a transfer and returns the reply's payload. done says how far the transfer is. */
using sender = std::function<std::vector<uint8_t>(const request &part, const std::string &done)>;

struct command {
    const char *name; /* one word, or two for a subcommand of a subcommand */
    const char *help;
    std::optional<uint32_t> type; /* none: the type and the size are options, or the command sends nothing */
    uint32_t payload_size;        /* bytes of the request's payload and of the reply's */
    std::span<const option> options;
    duration expected;
    /* Reads a reply of the request's size. Null for a transfer, and for a command that sends nothing. */
    outcome (*decode)(const request &sent, const std::vector<uint8_t> &reply);
    /* In place of decode: sends as many requests as it takes. */
    outcome (*transfer)(const request &task, const sender &send) = nullptr;
    const char *question = nullptr; /* asked before anything is sent, unless --yes was given */
};

/* All subcommands, in the order of the list. */
std::span<const command> commands();

/* Whether a request may share the service with others of its kind: it changes nothing that a test is about. */
bool may_share(const command &row);

/* Of every subcommand that sends a request: what it waits for and how long. */
std::span<const option> waiting_options();
/* Throws usage_error when options contradict each other. */
void check_together(const command &row, const request &task);

/* The request before any option was given. */
request empty_request(const command &row);

/* What may be given for an option, in words. */
std::string allowed_values(const option &field);
/* The name of a code, or the code itself when it has none. */
std::string name_of(std::span<const choice> choices, uint32_t code);
/* "1-3,7" as 1, 2, 3, 7; empty when it is no ascending list of numbers that the option takes. */
std::vector<uint32_t> parse_list(const option &field, const std::string &text);
/* The value for an option in its word's form. Throws usage_error. */
int64_t parse_value(const option &field, const std::string &value);

/* The value of an option that stays with the station, if it was given. */
std::optional<std::string> own_value(const request &sent, const char *name);

/* The name of an option in JSON and plans: "--any-speed" is any_speed, "LEVEL" is level. */
std::string member_name(std::string name);

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

/* Of requests and plans alike. A PoE test with failing ports may last 18 minutes, most requests a tenth of that. */
inline constexpr int64_t busy_timeout_s = 600;
inline constexpr option BUSY_TIMEOUT_OPTION{
    .name = "--busy-timeout",
    .help = "seconds to wait for a service that is at work for somebody else, 600 if not given",
    .least = 1,
    .most = 86400,
    .set = set_own_number};

/* The unit word lies at the same place in every record that has one. */
inline constexpr option UNIT_OPTION{.name = "--unit", .help = "switch unit", .offset = 4};

} // namespace station

#endif
