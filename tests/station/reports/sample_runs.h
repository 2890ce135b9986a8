/* SPDX-License-Identifier: MIT
 *
 * Journals of runs as they come from the line: what reports are tried on.
 */
#ifndef TESTS_SAMPLE_RUNS_H
#define TESTS_SAMPLE_RUNS_H

#include "tests/station/journal/journal_builder.h"

journal_builder passing_run(int ports = 28);
/* Ports 7 and 13 fail, 20 is not tested, 5 passes when its step is tried again. */
journal_builder failing_run(int ports = 28);
journal_builder erring_run();
/* Before the second of two steps, by SIGTERM. */
journal_builder interrupted_run();
journal_builder incomplete_run(int ports = 28);
/* The operator chose one of three steps. */
journal_builder partial_run();
/* Texts that attack the formats of the reports. */
journal_builder hostile_run();

#endif
