/* SPDX-License-Identifier: MIT
 *
 * A request from its row to its outcome: sent in as many parts as it takes, and its reply judged.
 */
#ifndef STATION_CARRY_OUT_H
#define STATION_CARRY_OUT_H

#include "exchange.h"

namespace station
{

/* The request ends without a reply that can be judged; what() says why. */
struct no_reply : std::runtime_error {
    exit_code code;
    const char *symptom; /* one word: "unreachable", "host-ended", "busy", "timeout", "interrupted", "input-ended" for
                            a question, or "no-verdict" after an answer */
    no_reply(exit_code why, const char *word, const std::string &sentence)
        : std::runtime_error(sentence), code(why), symptom(word)
    {
    }
};

/* Goes to the working directory of the host. Throws no_reply. */
void enter_directory(const std::string &directory);

/* Told as an onlooker is; done says how far a transfer is. */
struct audience {
    std::function<void(const std::string &done)> working;
    std::function<void()> waiting;
};

/* To be called in the service's directory, which is shown as `directory`. allowed is for all parts of a transfer
 * together. Throws no_reply. */
outcome carry_out(const command &row, const request &task, const std::string &directory, const patience &allowed,
                  const audience &listener);

/* The outcome of a reply that is all zeros, without sending anything: shows which values there are to judge, and throws
 * usage_error when the options do not fit together. */
outcome rehearse(const command &row, const request &task);

} // namespace station

#endif
