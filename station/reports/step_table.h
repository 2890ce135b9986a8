/* SPDX-License-Identifier: MIT
 *
 * What an attempt at a step found, as a table: a row for each port, a column for each check and each value; and
 * what it found about the unit as a whole.
 */
#ifndef REPORTS_STEP_TABLE_H
#define REPORTS_STEP_TABLE_H

#include <string>
#include <vector>

#include "station/journal/run_record.h"

namespace reports
{

struct table_column {
    std::string name;
    bool is_check;
    std::string limits; /* when they are the same for all rows */
};

struct table_row {
    common::place where;
    std::vector<const common::check *> cells; /* one for each column; null: nothing there */
    common::verdict verdict = common::verdict::none;
    std::string reason = {};
};

/* Points into the attempt. */
struct step_table {
    std::vector<const common::check *> unit = {};
    std::vector<table_column> columns = {};
    std::vector<table_row> rows = {};
};

step_table table_of(const journal::attempt &tried);

} // namespace reports

#endif
