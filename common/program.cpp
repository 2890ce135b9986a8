/* SPDX-License-Identifier: MIT */
#include "program.h"

#include <nlohmann/json.hpp>

#include "text.h"

namespace common
{

const char *version()
{
    return FACMSG_VERSION;
}

std::string error_json(exit_code code, const std::string &error, const char *verdict, nlohmann::ordered_json members)
{
    members.update({{"verdict", verdict}, {"exit_code", static_cast<int>(code)}, {"error", printable(error)}});
    return members.dump(2) + "\n";
}

std::string error_json(exit_code code, const std::string &error, const char *verdict)
{
    return error_json(code, error, verdict, nlohmann::ordered_json::object());
}

} // namespace common
