/* SPDX-License-Identifier: MIT
 *
 * Files of what the station says, command by command. An entry begins with == and a board, or none, and the options of
 * its host; then come changes to the board's file, or the beginning of a plan where there is no board; then commands:
 * $, the exit code if it is not 0, the arguments as a shell takes them, and below it all that is printed. " -> " and a
 * sentence stand for the station's name and that sentence below. In place of a subcommand, "steps STEPS" runs a plan of
 * these steps and shows its console up to the banner and the story of its journal (runs.h), and "dry PLAN" lists a plan
 * whose lines end with "; ". Of neighbouring port rows that differ in the number alone only the first is shown, …
 * stands for anything, DIR is the folder of the host, with a file "in" of 204 bytes, and every short time is 0.1 s.
 */
#ifndef TESTS_STATION_TRANSCRIPTS_H
#define TESTS_STATION_TRANSCRIPTS_H

#include <string>

/* Fails the test that calls it for each command of the file whose output or exit code differs. */
void play_transcripts(const std::string &file);

#endif
