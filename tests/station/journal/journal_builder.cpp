/* SPDX-License-Identifier: MIT
 *
 * Writes journals as the station does, one call a line, for tests of what reads them.
 */
#include "journal_builder.h"

#include <chrono>
#include <fmt/chrono.h>
#include <fstream>

#include "station/journal/journal_text.h"

using json = nlohmann::ordered_json;

std::string port_id(int port)
{
    return port == 0 ? "unit" : fmt::format("port{:02}", port);
}

static std::string timestamp(int64_t ms)
{
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(static_cast<time_t>(ms / 1000)), ms % 1000);
}

journal_builder::journal_builder(const std::string &serial, int ports, int hour, const json &choice)
    : now_ms(1795421702114 + hour * INT64_C(3600000)) /* 2026-11-23 */
{
    json parts{{{"hardwareInfoId", "unit"}, {"name", "unit"}, {"serialNumber", serial}}};
    for (int port = 1; port <= ports; port++)
        parts.push_back({{"hardwareInfoId", port_id(port)},
                         {"name", fmt::format("port {}", port)},
                         {"location", std::to_string(port)},
                         {"partType", ports > 12 && port > ports - 4 ? "SFP+" : "RJ45"}});
    json parameters{{"plan", "plans/final.toml"}, {"stop_on_fail", false}, {"steps", 3}};
    parameters.update(choice);
    add("schemaVersion", {{"major", 2}, {"minor", 0}});
    run({{"testRunStart",
          {{"name", "final"},
           {"version", "1.4"},
           {"commandLine", "facmsg-station run final.toml"},
           {"parameters", parameters},
           {"dutInfo", {{"dutInfoId", "unit"}, {"name", "SW-28P"}, {"hardwareInfos", parts}}},
           {"metadata", {{"operator", "0042"}, {"station", "FT-03"}, {"run_id", "7c1e"}}}}}});
}

void journal_builder::add(const char *kind, const json &artifact)
{
    const json line{{"sequenceNumber", sequence++}, {"timestamp", timestamp(now_ms)}, {kind, artifact}};
    lines += line.dump() + "\n";
    now_ms += 2;
}

journal_builder &journal_builder::run(const json &artifact)
{
    add("testRunArtifact", artifact);
    return *this;
}

journal_builder &journal_builder::step(const json &artifact)
{
    json whole{{"testStepId", std::to_string(step_id)}};
    whole.update(artifact);
    add("testStepArtifact", whole);
    return *this;
}

journal_builder &journal_builder::begin(const std::string &name, int attempt, int attempts, int covers)
{
    step_id++;
    step({{"testStepStart", {{"name", name}}}});
    json content{{"request", name},      {"options", json::object()}, {"attempt", attempt},
                 {"attempts", attempts}, {"expected_s", 26},          {"timeout_s", 120}};
    for (int port = 1; port <= covers; port++)
        content["covers"].push_back(port);
    return step({{"extension", {{"name", "facmsg-step"}, {"content", content}}}});
}

journal_builder &journal_builder::measure(int port, const std::string &name, const json &value, const json &at_most)
{
    json made{{"name", name}, {"value", value}, {"hardwareInfoId", port_id(port)}};
    if (!at_most.is_null())
        made["validators"] = {{{"type", "LESS_THAN_OR_EQUAL"}, {"value", at_most}}};
    return step({{"measurement", made}});
}

journal_builder &journal_builder::judge(int port, const std::string &check, const std::string &outcome,
                                        const std::string &message)
{
    const char *type = outcome == "pass" ? "PASS" : outcome == "fail" ? "FAIL" : "UNKNOWN";
    json made{{"verdict", check + "-" + outcome}, {"type", type}};
    if (!message.empty())
        made["message"] = message;
    made["hardwareInfoId"] = port_id(port);
    return step({{"diagnosis", made}});
}

journal_builder &journal_builder::whole(const std::string &outcome, const std::string &message)
{
    return judge(0, "step", outcome, message).end_step();
}

journal_builder &journal_builder::error(const std::string &symptom, const std::string &message)
{
    return step({{"error", {{"symptom", symptom}, {"message", message}}}});
}

journal_builder &journal_builder::note(const std::string &message)
{
    return step({{"log", {{"severity", "INFO"}, {"message", message}}}});
}

journal_builder &journal_builder::end_step(const std::string &status)
{
    return step({{"testStepEnd", {{"status", status}}}});
}

journal_builder &journal_builder::end(const std::string &status, const std::string &result)
{
    return run({{"testRunEnd", {{"status", status}, {"result", result}}}});
}

journal_builder &journal_builder::leave_out(const std::string &name)
{
    return begin(name).note("The operator left the step out.").end_step("SKIP");
}

journal_builder &journal_builder::wait(double seconds)
{
    now_ms += static_cast<int64_t>(seconds * 1000);
    return *this;
}

std::string journal_builder::text() const
{
    return lines;
}

std::filesystem::path journal_builder::save(const std::filesystem::path &folder) const
{
    std::filesystem::create_directories(folder);
    std::ofstream(folder / journal::file_name) << lines;
    return folder;
}
