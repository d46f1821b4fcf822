#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/Base64.h"

namespace quorvane {
namespace {

struct Base64Case {
    const char* name;
    std::string text;
    std::optional<std::string> bytes;
};
class Base64Decoded : public testing::TestWithParam<Base64Case> {};

TEST_P(Base64Decoded, givesTheBytes) {
    EXPECT_EQ(base64Decoded(GetParam().text), GetParam().bytes);
}

using namespace std::string_literals;

INSTANTIATE_TEST_SUITE_P(
    Texts, Base64Decoded,
    testing::Values(
        Base64Case{"empty", "", ""}, Base64Case{"oneByte", "Zg==", "f"}, Base64Case{"twoBytes", "Zm8=", "fo"},
        Base64Case{"threeBytes", "Zm9v", "foo"}, Base64Case{"fourBytes", "Zm9vYg==", "foob"},
        Base64Case{"sixBytes", "Zm9vYmFy", "foobar"}, Base64Case{"allBitsSet", "////", "\xff\xff\xff"},
        Base64Case{"wholeAlphabet", "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
                   "\x00\x10\x83\x10\x51\x87\x20\x92\x8b\x30\xd3\x8f\x41\x14\x93\x51\x55\x97\x61\x96\x9b"
                   "\x71\xd7\x9f\x82\x18\xa3\x92\x59\xa7\xa2\x9a\xab\xb2\xdb\xaf\xc3\x1c\xb3\xd3\x5d\xb7"
                   "\xe3\x9e\xbb\xf3\xdf\xbf"s},
        Base64Case{"zeroBytes", "AAA=", "\0\0"s}, Base64Case{"noPadding", "Zg", std::nullopt},
        Base64Case{"halfAPadding", "Zg=", std::nullopt}, Base64Case{"tooMuchPadding", "Zg======", std::nullopt},
        Base64Case{"paddingAlone", "====", std::nullopt}, Base64Case{"oneCharacter", "Z===", std::nullopt},
        Base64Case{"paddingInside", "Zg==Zg==", std::nullopt}, Base64Case{"lineEnd", "Zm9v\n", std::nullopt},
        Base64Case{"blankInside", "Zm9 v===", std::nullopt}, Base64Case{"webAlphabet", "-___", std::nullopt},
        Base64Case{"beyondASCII", "Zm\xc3\xa9", std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane
