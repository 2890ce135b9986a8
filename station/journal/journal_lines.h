/* SPDX-License-Identifier: MIT
 *
 * A line of a journal for those who write, read and check it: its values, its words, its shape, and what it adds to
 * the record of a run.
 */
#ifndef JOURNAL_JOURNAL_LINES_H
#define JOURNAL_JOURNAL_LINES_H

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "run_record.h"

namespace journal
{

using nlohmann::json;

/* A member of an object; null when it has none of that name or is no object. Texts are made printable, and what has
 * another type is empty. */
const json &member(const json &object, const char *name);
std::string text_at(const json &object, const char *name);
common::value value_at(const json &object, const char *name);
moment moment_at(const json &object, const char *name);
/* A whole number from 1 to 999999. */
int64_t count_at(const json &object, const char *name, int64_t otherwise);
/* A list with commas between the names. */
std::vector<std::string> names_at(const json &object, const char *name);
/* The number at the end of a location such as 7 or PORT7, which can be no more than a few digits long; or 0. */
int port_number_at(const json &object, const char *name);

/* A diagnosis has a name such as overload-fail-retried, and a type: PASS, FAIL or UNKNOWN. */
struct diagnosis_name {
    std::string check;
    common::verdict verdict;
};
diagnosis_name read_diagnosis(std::string_view name, std::string_view type);

/* With what a check's name ends, and its type. What no ending says is written as not judged. */
struct diagnosis_ending {
    std::string_view text, type;
};
diagnosis_ending ending_of(common::verdict verdict);

/* The result of a run by its end line alone, which has one for all that is unjudged, partial or interrupted: unjudged.
 * A pair that means nothing is no verdict, never a pass. */
run_result read_result(std::string_view status, std::string_view result);

/* What the result of a run depends on beside its record. */
struct run_choice {
    std::vector<std::string> only = {}, skipped = {}; /* names of steps that the operator chose, or left out */
    bool interrupted = false;                         /* the journal says so */
};

/* Adds what the whole lines of a journal say to an empty record: its result as the end line has it, attempts in the
 * order of their start, with the verdict none where no line says one and incomplete where they have no end. Throws
 * no_journal, with the name of the file and the line. */
run_choice read_lines(std::string_view text, const std::string &file, run_record &run);

/* A sentence for each way in which the object is no line of a journal, with the place: "log.severity is 7; expected a
 * text". Places within a line's artifact are told without the artifact's own name. */
std::vector<std::string> shape_problems(const json &line);

/* Enough of a value to recognise it by: at most 40 characters of a scalar, the type of anything else. */
std::string excerpt(const json &value);

/* The text at a member as it stands there, for the checks; empty when it is none. */
std::string raw_text_at(const json &object, const char *name);

/* The values of a journal: each is compared with values of its own type only, and the elements of a series are counted
 * and stand within it and its step. A sentence for each fault goes to the report. */
class measurement_checker
{
  public:
    using report = std::function<void(const std::string &sentence)>;
    explicit measurement_checker(report add) : add_(std::move(add)) {}
    /* For each artifact of a step, whatever it is. */
    void check(const std::string &step, std::string_view kind, const json &content);

  private:
    struct series {
        std::string step;
        std::vector<std::string> kinds; /* of the values that its validators compare with */
        size_t count = 0;
        bool open = true;
    };

    void check_kinds(const std::vector<std::string> &kinds, const json &content);
    void begin(const std::string &step, const json &content);
    void end_step(const std::string &step);
    series *open_series(const std::string &step, const json &content);
    void expect_count(const json &content, const char *name, size_t count);

    report add_;
    std::map<std::string, series> series_ = {}; /* by measurementSeriesId */
};

} // namespace journal

#endif
