#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/TextHash.h"

namespace quorvane {
namespace {

TEST(TextHash, tellsTextsOfAllLengthsApart) {
    std::set<std::uint64_t> hashes;
    const std::string text(40, 'a');
    std::size_t count = 0;
    for (std::size_t size = 0; size <= text.size(); ++size) {
        hashes.insert(textHash(text.substr(0, size)));
        ++count;
        for (std::size_t at = 0; at < size; ++at) {
            std::string other = text.substr(0, size);
            other[at] = 'b';
            hashes.insert(textHash(other));
            ++count;
        }
    }
    EXPECT_EQ(hashes.size(), count);
}

TEST(TextHash, dependsOnTheBytesAlone) {
    const std::string text = "resp_0123456789abcdef";
    for (std::size_t shift = 0; shift < 8; ++shift) {
        const std::string moved = std::string(shift, 'x') + text + "y";
        EXPECT_EQ(textHash(std::string_view{moved}.substr(shift, text.size())), textHash(text));
    }
    EXPECT_EQ(textHash({}), textHash(""));
}

/// Tables use the lowest bits.
TEST(TextHash, lowBitsOfCountedNamesAreSpread) {
    std::vector<int> slots(1024);
    for (int index = 0; index < 16384; ++index)
        ++slots[textHash("span-" + std::to_string(index)) % slots.size()];
    for (const int inSlot : slots)
        EXPECT_LT(inSlot, 48) << "16 would be even";
}

}  // namespace
}  // namespace quorvane
