#include <ostream>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/PercentDecoding.h"

namespace quorvane {
namespace {

using namespace std::string_literals;

struct PercentCase {
    const char* name;
    std::string text;
    std::optional<std::string> expected;
};
void PrintTo(const PercentCase& row, std::ostream* stream) {
    *stream << row.name;
}
class PercentDecoding : public ::testing::TestWithParam<PercentCase> {};

TEST_P(PercentDecoding, givesTheTextOrNothing) {
    EXPECT_EQ(percentDecoded(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByText, PercentDecoding,
    ::testing::Values(
        PercentCase{"empty", "", ""}, PercentCase{"plain", "a+b c", "a+b c"},
        PercentCase{"slashes", "%2Fhome%2fana", "/home/ana"}, PercentCase{"percent", "%25%32%35", "%25"},
        PercentCase{"severalBytesOfALetter", "%C3%A9%e2%82%ac%F0%9F%98%80", "é€😀"},
        PercentCase{"letterHalfEncoded", "\xC3%A9", "é"}, PercentCase{"nulByte", "a%00b", "a\0b"s},
        PercentCase{"percentAtTheEnd", "a%", std::nullopt}, PercentCase{"oneDigitAtTheEnd", "a%2", std::nullopt},
        PercentCase{"firstIsNoDigit", "%g0", std::nullopt}, PercentCase{"secondIsNoDigit", "%0g", std::nullopt},
        PercentCase{"signs", "%-1%+1", std::nullopt}, PercentCase{"blankForADigit", "% 1", std::nullopt},
        PercentCase{"twoPercents", "%%41", std::nullopt}, PercentCase{"loneByte", "%FF", std::nullopt},
        PercentCase{"halfALetter", "%C3", std::nullopt}, PercentCase{"overlong", "%C0%AF", std::nullopt},
        PercentCase{"surrogate", "%ED%A0%80", std::nullopt}, PercentCase{"bytesThatWereNoText", "\xFF", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

/// Every text comes back from the encoding of its bytes.
TEST(PercentDecodingProperty, undoesTheEncodingOfEveryByte) {
    const std::string text = "/home/ünïcödé/a b+c%25日本\n\t\x01";
    std::string encoded;
    for (const char byte : text)
        encoded += fmt::format("%{:02X}", static_cast<unsigned char>(byte));
    EXPECT_EQ(percentDecoded(encoded), text);
}

}  // namespace
}  // namespace quorvane
