#include <string_view>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FNV1a.h"

namespace quorvane {
namespace {

std::uint64_t hashOf(std::string_view text) {
    FNV1a hash;
    hash.add(text);
    return hash.value();
}

// The published test vectors of the algorithm.
TEST(FNV1a, knownTextsHaveTheirKnownHashes) {
    EXPECT_EQ(hashOf(""), 0xcbf29ce484222325U);
    EXPECT_EQ(hashOf("a"), 0xaf63dc4c8601ec8cU);
    EXPECT_EQ(hashOf("foobar"), 0x85944171f73967e8U);
}

TEST(FNV1a, bytesAreUnsigned) {
    EXPECT_EQ(hashOf("\xff"), 0xaf64724c8602eb6eU);
}

TEST(FNV1a, addingInStepsEqualsAddingAtOnce) {
    FNV1a hash;
    for (const std::string_view part : {"foo", "", "b", "ar"})
        hash.add(part);
    EXPECT_EQ(hash.value(), hashOf("foobar"));
}

}  // namespace
}  // namespace quorvane
