#include <ostream>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/UTF8.h"

namespace quorvane {
namespace {

using namespace std::string_literals;

struct UTF8Case {
    const char* name;
    std::string bytes;
    std::string repaired;
};
void PrintTo(const UTF8Case& row, std::ostream* stream) {
    *stream << row.name;
}
class UTF8 : public ::testing::TestWithParam<UTF8Case> {};

TEST_P(UTF8, isRepairedWhereItIsBroken) {
    const UTF8Case& row = GetParam();
    EXPECT_EQ(repairedUTF8(row.bytes), row.repaired);
    EXPECT_EQ(isUTF8(row.bytes), row.bytes == row.repaired);
    EXPECT_TRUE(isUTF8(row.repaired));
}

INSTANTIATE_TEST_SUITE_P(
    ByBytes, UTF8,
    ::testing::Values(UTF8Case{"empty", "", ""}, UTF8Case{"ascii", "a\0b"s, "a\0b"s}, UTF8Case{"letters", "é€😀", "é€😀"},
                      UTF8Case{"loneByte",
                               "a\xFF"
                               "b",
                               "a\uFFFD"
                               "b"},
                      UTF8Case{"twoLoneBytes", "\xFE\xFF", "\uFFFD\uFFFD"},
                      UTF8Case{"continuationAlone", "a\x80", "a\uFFFD"},
                      UTF8Case{"beginningOfALetterIsOnePiece", "\xF0\x9F\x98", "\uFFFD"},
                      UTF8Case{"beginningOfALetterInTheMiddle", "\xE2\x82z", "\uFFFDz"},
                      UTF8Case{"beginningBeforeALetter", "\xC3\xC3\xA9", "\uFFFDé"},
                      UTF8Case{"overlong", "\xC0\xAF", "\uFFFD\uFFFD"},
                      UTF8Case{"surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                      UTF8Case{"beyondTheLastCharacter", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane
