/* SPDX-License-Identifier: MIT */
#include "identity.h"

#include <cctype>
#include <chrono>
#include <dlfcn.h>
#include <filesystem>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <random>
#include <unistd.h>

#include "common/terminal.h"
#include "common/text.h"
#include "facmsg.h"
#include "judgement.h"
#include "operator.h"

namespace plan
{

using nlohmann::ordered_json;

static std::string ask_for(const label &field)
{
    const std::string expected = expected_text(field);
    for (;;) {
        const auto answer = ask(fmt::format("{} ({}):", field.name, field.hint.empty() ? expected : field.hint));
        if (!answer)
            throw station::usage_error(
                fmt::format("{}: found the end of the input, allowed: {}", field.option, expected));
        if (matches(field, *answer))
            return *answer;
        common::say(fmt::format("{}: found '{}', expected {}", field.name, common::printable(*answer), expected));
    }
}

static std::string settle(const label &field, const std::string &option, bool may_ask)
{
    std::string text = trimmed(option.empty() ? field.preset : option);
    if (!text.empty() && !matches(field, text))
        throw station::usage_error(fmt::format("{}: found '{}'{}, allowed: {}", field.option, common::printable(text),
                                               common::printable(text) == text ? "" : ", which is no readable UTF-8",
                                               expected_text(field)));
    if (!text.empty() || !field.required)
        return text;
    if (!may_ask || !somebody_there())
        throw station::usage_error(
            fmt::format("{}: needed when nobody can be asked, {}", field.option, expected_text(field)));
    return ask_for(field);
}

static std::string host_name()
{
    char name[256] = "";
    gethostname(name, sizeof(name) - 1);
    return name;
}

identity identify(const test_plan &plan, identity labels, bool may_ask)
{
    labels.serial = settle(plan.serial, labels.serial, may_ask);
    labels.operator_name = settle(plan.operator_name, labels.operator_name, may_ask);
    if (labels.station.empty() && plan.station.preset.empty() && !plan.station.required)
        labels.station = host_name();
    labels.station = settle(plan.station, labels.station, may_ask);
    return labels;
}

std::string folder_name(const std::string &serial)
{
    constexpr size_t LONGEST = 64;
    std::string safe = serial.substr(0, LONGEST);
    for (char &letter : safe)
        if (!std::isalnum(static_cast<unsigned char>(letter)) && letter != '-' && letter != '.')
            letter = '_';
    if (safe.empty() || safe.front() == '.')
        safe.insert(safe.begin(), '_');
    return fmt::format("{:%Y%m%dT%H%M%SZ}-{}", fmt::gmtime(std::chrono::system_clock::now()), safe);
}

static std::string new_run_id()
{
    std::random_device words;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", words(), words(), words(), words());
}

static ordered_json unit_of(const test_plan &plan, const std::string &serial)
{
    ordered_json hardware = {{{"hardwareInfoId", "unit"}, {"name", "unit"}, {"serialNumber", serial}}};
    for (const port_group &group : plan.panel)
        for (const uint32_t port : group.ports)
            hardware.push_back({{"hardwareInfoId", front_port(port).id},
                                {"name", fmt::format("port {}", port)},
                                {"location", std::to_string(port)},
                                {"partType", group.name}});
    return {{"dutInfoId", "unit"},
            {"name", plan.product},
            {"platformInfos", ordered_json::array({{{"info", plan.product}}})},
            {"hardwareInfos", hardware}};
}

/* Of the library that is really loaded: its file is named by it, as libfacmsg.so.0.1.0. */
static std::string library_version()
{
    constexpr std::string_view NAME = "libfacmsg.so.";
    Dl_info loaded{};
    std::error_code gone;
    if (dladdr(reinterpret_cast<const void *>(&facmsg_client_send), &loaded) != 0 && loaded.dli_fname != nullptr)
        if (const std::string file = std::filesystem::canonical(loaded.dli_fname, gone).filename();
            file.starts_with(NAME))
            return file.substr(NAME.size());
    return common::version();
}

ordered_json run_head(const test_plan &plan, const identity &of, const std::string &command_line,
                      const ordered_json &parameters)
{
    ordered_json metadata = ordered_json::object();
    if (!of.operator_name.empty())
        metadata["operator"] = of.operator_name;
    metadata["station"] = of.station;
    metadata["run_id"] = new_run_id();
    metadata["station_version"] = common::version();
    metadata["library_version"] = library_version();
    return {{"name", plan.name},
            {"version", plan.version},
            {"commandLine", command_line},
            {"parameters", parameters},
            {"dutInfo", unit_of(plan, of.serial)},
            {"metadata", metadata}};
}

} // namespace plan
