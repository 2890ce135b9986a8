/* SPDX-License-Identifier: MIT
 *
 * What a program is told in place of a result.
 */
#include "error_json.h"

#include "printable.h"

namespace common
{

std::string error_json(common::exit_code code, const std::string &error, const char *verdict,
                       nlohmann::ordered_json members)
{
    members.update({{"verdict", verdict}, {"exit_code", static_cast<int>(code)}, {"error", printable(error)}});
    return members.dump(2) + "\n";
}

} // namespace common
