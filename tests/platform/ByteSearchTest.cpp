#include <random>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/ByteSearch.h"

namespace quorvane {
namespace {

using namespace std::string_literals;

TEST(ByteSearch, findsTheFirstFromThePositionOn) {
    EXPECT_EQ(findBytes("abcabc", "bc"), 1);
    EXPECT_EQ(findBytes("abcabc", "bc", 1), 1);
    EXPECT_EQ(findBytes("abcabc", "bc", 2), 4);
    EXPECT_EQ(findBytes("abcabc", "bc", 5), std::string_view::npos);
    EXPECT_EQ(findBytes("abcabc", "bc", 6), std::string_view::npos);
    EXPECT_EQ(findBytes("abcabc", "bc", 7), std::string_view::npos);
    EXPECT_EQ(findBytes("", "a"), std::string_view::npos);
    EXPECT_EQ(findBytes("a\0b"s, "\0b"s), 1);
}

TEST(ByteSearch, findsWhatTheTextsOwnSearchFinds) {
    std::mt19937 random{7};
    const auto text = [&](std::size_t longest) {
        std::string letters(random() % (longest + 1), 'a');
        for (char& letter : letters)
            letter = static_cast<char>('a' + random() % 2);
        return letters;
    };
    for (int round = 0; round < 20'000; ++round) {
        const std::string haystack = text(20);
        const std::string needle = text(4);
        const std::size_t from = random() % 24;
        EXPECT_EQ(findBytes(haystack, needle, from), haystack.find(needle, from)) << haystack << " " << needle;
    }
}

}  // namespace
}  // namespace quorvane
