/* SPDX-License-Identifier: MIT
 *
 * Writes journals as the station does, one call a line, for tests of what reads them.
 */
#ifndef TESTS_JOURNAL_BUILDER_H
#define TESTS_JOURNAL_BUILDER_H

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

class journal_builder
{
  public:
    using json = nlohmann::ordered_json;

    /* Begins with the version and the run's start, some hours later than other runs. The last four of more than twelve
     * ports are "SFP+". */
    explicit journal_builder(const std::string &serial = "SW28-0042", int ports = 4, int hour = 0,
                             const json &choice = json::object()); /* such as {"only": "poe"} */

    journal_builder &run(const json &artifact);
    journal_builder &step(const json &artifact); /* of the step that was begun last */
    /* covers: it has to judge the ports from 1 to this; 0: whichever the reply names. */
    journal_builder &begin(const std::string &name, int attempt = 1, int attempts = 1, int covers = 0);
    journal_builder &measure(int port, const std::string &name, const json &value, const json &at_most = {});
    /* outcome: pass, fail, fail-retried, not-tested or unknown; port 0 is the unit. */
    journal_builder &judge(int port, const std::string &check, const std::string &outcome,
                           const std::string &message = "");
    journal_builder &whole(const std::string &outcome, const std::string &message);
    journal_builder &error(const std::string &symptom, const std::string &message);
    journal_builder &note(const std::string &message);
    journal_builder &end_step(const std::string &status = "COMPLETE");
    journal_builder &end(const std::string &status, const std::string &result);
    journal_builder &leave_out(const std::string &name); /* a step that the operator did not choose */
    journal_builder &wait(double seconds);

    std::string text() const;
    /* Writes the journal into the folder, which is made; returns the folder. */
    std::filesystem::path save(const std::filesystem::path &folder) const;

  private:
    void add(const char *kind, const json &artifact);

    std::string lines;
    int64_t sequence = 0, step_id = -1, now_ms;
};

std::string port_id(int port);

#endif
