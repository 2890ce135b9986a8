/* SPDX-License-Identifier: MIT
 *
 * The digest that a plan file is known by.
 */
#include "digest.h"

#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <fmt/ranges.h>

extern "C" {
#include <sha2.h>
}

namespace plan
{

std::string sha256_of(std::string_view bytes)
{
    SHA2_CTX state;
    std::array<uint8_t, SHA256_DIGEST_LENGTH> digest;
    SHA256Init(&state);
    SHA256Update(&state, reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    SHA256Final(digest.data(), &state);
    return fmt::format("{:02x}", fmt::join(digest, ""));
}

} // namespace plan
