/* SPDX-License-Identifier: MIT
 *
 * What a test saw happen, in order: driver calls, waits, marker-file changes. One line each; a line that repeats at
 * once is written once, with " xN" behind it.
 */
#ifndef TESTS_SUPPORT_TRACE_H
#define TESTS_SUPPORT_TRACE_H

#include <string>

void trace_add(const std::string &line);
void trace_clear();
std::string trace_text();

/* The lines that start with prefix, repeats counted. */
int trace_count(const std::string &prefix);

#endif
