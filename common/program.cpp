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

std::string error_json(exit_code code, const std::string &error, const char *verdict, const char *request)
{
    nlohmann::ordered_json object;
    if (request != nullptr)
        object["request"] = {{"name", request}};
    object.update({{"verdict", verdict}, {"exit_code", static_cast<int>(code)}, {"error", printable(error)}});
    return object.dump(2) + "\n";
}

} // namespace common
