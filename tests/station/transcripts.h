/* SPDX-License-Identifier: MIT
 *
 * Files of entries that are played: a board's name and what is added to its file, a command line after "$ ", and the
 * whole output with "exit" and the code as its last line. Of neighbouring port rows that differ in the number alone
 * only the first is there. Lines that begin with # say what the next entries are about.
 */
#ifndef TESTS_STATION_TRANSCRIPTS_H
#define TESTS_STATION_TRANSCRIPTS_H

#include "programs.h"

/* Plays a file; run_line runs the words of a command line, which blanks part, at the board of its entry. */
void play_transcripts(const std::string &file,
                      const std::function<finished(const simulated_switch &board, const words &line)> &run_line);

#endif
