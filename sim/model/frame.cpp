/* SPDX-License-Identifier: MIT */
#include "frame.h"

#include <algorithm>

namespace sim
{

static constexpr size_t TAG_AT = 12;
static constexpr size_t TAG_SIZE = 4;
static constexpr uint8_t TAG_TYPE[] = {0x81, 0x00};

frame::frame(std::span<const uint8_t> bytes)
{
    const bool tagged = bytes.size() >= TAG_AT + TAG_SIZE + 2 &&
                        std::equal(std::begin(TAG_TYPE), std::end(TAG_TYPE), bytes.begin() + TAG_AT);
    std::vector<uint8_t> untagged(bytes.begin(), bytes.end());
    if (tagged) {
        tag = static_cast<uint16_t>(bytes[TAG_AT + 2] << 8 | bytes[TAG_AT + 3]);
        untagged.erase(untagged.begin() + TAG_AT, untagged.begin() + TAG_AT + TAG_SIZE);
    }
    untagged_ = std::make_shared<const std::vector<uint8_t>>(std::move(untagged));
}

std::vector<uint8_t> frame::bytes() const
{
    auto all = *untagged_;
    if (tag) {
        const uint8_t added[] = {TAG_TYPE[0], TAG_TYPE[1], static_cast<uint8_t>(*tag >> 8), static_cast<uint8_t>(*tag)};
        all.insert(all.begin() + TAG_AT, std::begin(added), std::end(added));
    }
    return all;
}

size_t frame::size() const
{
    return untagged_->size() + (tag ? TAG_SIZE : 0);
}

mac_address frame::destination() const
{
    mac_address mac;
    std::copy_n(untagged_->begin(), mac.size(), mac.begin());
    return mac;
}

} // namespace sim
