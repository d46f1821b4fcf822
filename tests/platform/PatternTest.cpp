#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Pattern.h"

namespace quorvane {
namespace {

TEST(Pattern, tellsWhereTheLeftmostMatchBegins) {
    const Pattern digits{"[0-9]+"};
    EXPECT_EQ(digits.search("abc 12 34"), 4U);
    EXPECT_EQ(digits.search("12"), 0U);
    EXPECT_FALSE(digits.search("abc"));
    EXPECT_FALSE(digits.search(""));
}

TEST(Pattern, emptyMatchIsAMatch) {
    EXPECT_EQ(Pattern{""}.search("abc"), 0U);
    EXPECT_EQ(Pattern{"x*"}.search(""), 0U);
    EXPECT_EQ(Pattern{"x*"}.search(std::string_view{}), 0U);
    EXPECT_EQ(Pattern{"$"}.search("abc"), 3U);
}

TEST(Pattern, anchorsMeanTheWholeText) {
    const Pattern dated{"-[0-9]{8}$"};
    EXPECT_EQ(dated.search("model-20250101"), 5U);
    EXPECT_FALSE(dated.search("model-20250101-x"));
    EXPECT_FALSE(Pattern{"^b"}.search("a\nb"));
}

TEST(Pattern, leftmostWinsOverLonger) {
    EXPECT_EQ(Pattern{"bbb|ab"}.search("xabbb"), 1U);
}

TEST(Pattern, textNeedNotBeUTF8) {
    EXPECT_EQ(Pattern{"b"}.search("\xff\xfe\x80z b"), 5U);
    EXPECT_EQ(Pattern{"a.b"}.search("a\xff"
                                    "b"),
              0U);
    EXPECT_EQ(Pattern{"b"}.search(std::string_view{"a\0b", 3}), 2U);
}

TEST(Pattern, hostileTextTakesLinearTime) {
    const Pattern greedy{"(a+)+$"};
    std::string text(200000, 'a');
    text.push_back('b');
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(greedy.search(text));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds{10});
}

TEST(Pattern, movedPatternStillSearches) {
    Pattern first{"a"};
    Pattern second{std::move(first)};
    EXPECT_EQ(second.search("ba"), 1U);
    first = Pattern{"c"};
    std::swap(first, second);
    EXPECT_EQ(second.search("bac"), 2U);
    EXPECT_EQ(first.search("bac"), 1U);
}

TEST(Pattern, threadsShareAPattern) {
    const Pattern digits{"[0-9]+"};
    std::vector<int> right(4, 0);
    std::vector<std::thread> threads;
    for (int& count : right) {
        threads.emplace_back([&digits, &count] {
            for (int round = 0; round < 500; ++round)
                count += digits.search("abc 12 34") == 4U ? 1 : 0;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, std::vector<int>(4, 500));
}

}  // namespace
}  // namespace quorvane
