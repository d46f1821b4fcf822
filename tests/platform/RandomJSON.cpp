#include "tests/platform/RandomJSON.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace quorvane::testing {
namespace {

constexpr std::array<const char*, 6> keys{"type", "id", "message", "typ", "types", "\xc3\xa9t\xc3\xa9"};

}  // namespace

JSONTree RandomJSON::tree(int depth) {
    switch (below(depth > 0 ? 8 : 6)) {
        case 0: return nullptr;
        case 1: return below(2) == 0;
        case 2: return static_cast<std::int64_t>(random_());
        case 3: return std::uint64_t{1} << 63 | random_();
        case 4: {
            double value = 0;
            do {
                const std::uint64_t bits = random_();
                std::memcpy(&value, &bits, sizeof value);
                if (below(2) == 0) value = static_cast<double>(bits % 100000000) / 9973.0;
            } while (!std::isfinite(value) || std::trunc(value) == value);
            return value;
        }
        case 5: return plainText();
        case 6: {
            JSONTree::Array elements;
            for (std::size_t count = below(4); count > 0; --count)
                elements.push_back(tree(depth - 1));
            return elements;
        }
        default: {
            JSONTree::Object members;
            for (std::size_t count = below(4); count > 0; --count)
                members.emplace(below(2) == 0 ? key() : plainText(), tree(depth - 1));
            return members;
        }
    }
}

std::string RandomJSON::key() {
    return keys[below(keys.size())];
}

std::string RandomJSON::plainText() {
    constexpr std::array<const char*, 10> pieces{"a",    "B7",   " ",    "\"",           "\\",
                                                 "\n\t", "\x01", "/{[:", "\xc3\xa9\x7f", "\xf0\x9f\x98\x80"};
    std::string text;
    for (std::size_t count = below(5); count > 0; --count)
        text += pieces[below(pieces.size())];
    if (below(20) == 0) text += '\0';
    return text;
}

/// With its quotes.
std::string RandomJSON::stringText() {
    constexpr std::array<const char*, 16> pieces{
        "a",         "type",   " ",     "{[",    "]}",    ",",         ":",
        "\xc3\xa9",  R"(\")",  R"(\\)", R"(\n)", R"(\/)", R"(\u0041)", R"(\ud83d\ude00)",
        R"(\ud800)", R"(\\\")"};
    // Half of all texts hold no escape.
    const std::size_t choice = below(2) == 0 ? 8 : pieces.size();
    std::string text = "\"";
    for (std::size_t count = below(5); count > 0; --count)
        text += pieces[below(choice)];
    return text + '"';
}

std::string RandomJSON::keyText() {
    switch (below(8)) {
        case 0: return stringText();
        case 1: return R"("ty\u0070e")";
        default: return '"' + key() + '"';
    }
}

std::string RandomJSON::numberText() {
    constexpr std::array<const char*, 16> numbers{"0",
                                                  "-0",
                                                  "7",
                                                  "-12",
                                                  "1.5",
                                                  "-0.0",
                                                  "1e5",
                                                  "2E-3",
                                                  "1.25e+10",
                                                  "9223372036854775807",
                                                  "-9223372036854775808",
                                                  "9223372036854775808",
                                                  "18446744073709551615",
                                                  "18446744073709551616",
                                                  "-9223372036854775809",
                                                  "123456789012345678901234567890"};
    // Numbers that the fast parser cannot read are rare, so that it has its share.
    return numbers[below(below(10) == 0 ? numbers.size() : 13)];
}

std::string RandomJSON::blank() {
    constexpr std::array<const char*, 5> blanks{" ", "\n", "\t", "\r\n", "   "};
    return below(3) == 0 ? blanks[below(blanks.size())] : "";
}

std::string RandomJSON::arrayText(int depth) {
    std::string text = "[" + blank();
    for (std::size_t count = below(4), index = 0; index < count; ++index) {
        if (index > 0) text += "," + blank();
        text += valueText(depth - 1) + blank();
    }
    return text + "]";
}

std::string RandomJSON::valueText(int depth) {
    switch (below(depth > 0 ? 9 : 7)) {
        case 0: return "null";
        case 1: return "true";
        case 2: return "false";
        case 3: return numberText();
        case 4:
        case 5:
        case 6: return stringText();
        case 7: return arrayText(depth);
        default: return objectText(depth - 1);
    }
}

std::string RandomJSON::objectText(int depth) {
    std::string text = blank() + "{" + blank();
    for (std::size_t count = below(6), index = 0; index < count; ++index) {
        if (index > 0) text += "," + blank();
        text += keyText() + blank() + ":" + blank() + valueText(depth) + blank();
    }
    return text + "}" + blank();
}

}  // namespace quorvane::testing
