#include <algorithm>
#include <array>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/MarkedBlock.h"

namespace quorvane {
namespace {

constexpr MarkedBlock marks{"# BEGIN X", "# END X"};
constexpr std::string_view block = "# BEGIN X (may go)\nlet it = be\n# END X";

/// A text put together from random pieces.
class RandomText {
public:
    explicit RandomText(std::vector<std::string_view> pieces) : pieces_{std::move(pieces)} {}

    std::string next() {
        std::string text;
        for (std::size_t count = random_() % 12; count > 0; --count)
            text += pieces_[random_() % pieces_.size()];
        return text;
    }

private:
    std::vector<std::string_view> pieces_;
    std::mt19937 random_{20260719};
};

std::string withLastLineFeed(std::string text) {
    if (!text.empty() && text.back() != '\n') text += '\n';
    return text;
}

/// The lines that hold more than a carriage return.
std::vector<std::string> filledLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);) {
        line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

std::ptrdiff_t lineFeeds(std::string_view text) {
    return std::count(text.begin(), text.end(), '\n');
}

struct RemovalCase {
    const char* name;
    std::string text;
    std::string expected;
};
class MarkedBlockRemoval : public ::testing::TestWithParam<RemovalCase> {};

TEST_P(MarkedBlockRemoval, givesTheTextWithoutTheBlock) {
    EXPECT_EQ(marks.removedFrom(GetParam().text), GetParam().expected);
}

const std::string b{block};
const std::string crlfBlock = "# BEGIN X (may go)\r\nlet it = be\r\n# END X";

INSTANTIATE_TEST_SUITE_P(
    ByText, MarkedBlockRemoval,
    ::testing::Values(RemovalCase{"noMarkerAtAll", "a\n\n\n", "a\n\n\n"}, RemovalCase{"emptyText", "", ""},
                      RemovalCase{"beginMarkerAlone", "a\n# BEGIN X\nb\n", "a\n# BEGIN X\nb\n"},
                      RemovalCase{"endMarkerAlone", "a\n\n# END X\nb\n", "a\n\n# END X\nb\n"},
                      RemovalCase{"endMarkerAheadOfTheBeginMarker", "a\n\n# END X\nb\n\n# BEGIN X\nc\n",
                                  "a\n\n# END X\nb\n\n# BEGIN X\nc\n"},
                      RemovalCase{"strayEndMarkerAheadOfAWholeBlock", "# END X\na\n\n" + b + "\n", "# END X\na\n"},
                      RemovalCase{"beginMarkerWithoutEndKeepsTheLinesUpToTheBlock", "# BEGIN X\na\nb\n\n" + b + "\nc\n",
                                  "# BEGIN X\na\nb\nc\n"},
                      RemovalCase{"blockAlone", b + "\n", ""}, RemovalCase{"blockAloneWithoutLineFeed", b, ""},
                      RemovalCase{"blankLineAheadGoes", "a\n\n" + b + "\n", "a\n"},
                      RemovalCase{"onlyOneBlankLineAheadGoes", "a\n\n\n\n" + b + "\n", "a\n\n\n"},
                      RemovalCase{"blankLineAtTheVeryBeginningGoes", "\n" + b + "\nc\n", "c\n"},
                      RemovalCase{"noBlankLineAheadJoinsNothing", "a\n" + b + "\nb\n", "a\nb\n"},
                      RemovalCase{"onlyOneLineFeedBehindGoes", "a\n\n" + b + "\n\n\nb", "a\n\n\nb"},
                      RemovalCase{"noLineFeedBehindTheEndMarker", "a\n\n" + b, "a\n"},
                      RemovalCase{"textAheadOfTheBeginMarkerOnItsLine", "a\n\nx " + b + "\nb\n", "a\n\nx \nb\n"},
                      RemovalCase{"textBehindTheEndMarkerOnItsLine", "a\n\n" + b + " y\nb\n", "a\n y\nb\n"},
                      RemovalCase{"textOnBothMarkersLines", "x " + b + " y\n", "x \n y\n"},
                      RemovalCase{"markersAndTextOnOneLine", "x # BEGIN X # END X y\n", "x  y\n"},
                      RemovalCase{"indentedBlock", "a\n  " + b + "\n", "a\n  \n"},
                      RemovalCase{"firstOfTwoBlocks", "a\n\n" + b + "\n\n" + b + "\nc\n", "a\n\n" + b + "\nc\n"},
                      RemovalCase{"plainBlockInATextWithCarriageReturns", "a\r\n\r\n\n" + b + "\n", "a\r\n\r\n"},
                      RemovalCase{"allOfItConvertedToCarriageReturns", "a\r\n\r\n" + crlfBlock + "\r\nb\r\n",
                                  "a\r\nb\r\n"},
                      RemovalCase{"convertedBlockBehindTextOnItsLine", "x" + crlfBlock + "\r\nb\r\n", "x\r\nb\r\n"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(MarkedBlock, isInATextFromItsBeginMarkerOn) {
    EXPECT_TRUE(marks.isIn("a # BEGIN X"));
    EXPECT_FALSE(marks.isIn("a # END X # BEGIN"));
    EXPECT_FALSE(marks.isIn(""));
}

TEST(MarkedBlock, isAppendedBehindOneBlankLine) {
    EXPECT_EQ(MarkedBlock::appended("a\n", block), "a\n\n" + b + "\n");
}

TEST(MarkedBlock, appendingAddsAMissingLastLineFeed) {
    EXPECT_EQ(MarkedBlock::appended("a", block), "a\n\n" + b + "\n");
    EXPECT_EQ(MarkedBlock::appended("a\r\nb\r", block), "a\r\nb\r\n\n" + b + "\n");
}

TEST(MarkedBlock, beginsAnEmptyText) {
    EXPECT_EQ(MarkedBlock::appended("", block), b + "\n");
}

TEST(MarkedBlock, comesOutOfAnyTextAsItWentIn) {
    // Markers without their other half are among the texts, whole blocks are not.
    for (const std::string_view half : {"# BEGIN X", "# END X"}) {
        RandomText texts{{"\n", "\n", "\r\n", "\r", "a", " ", "\t", "b\n", "# BEGIN", "# END", half}};
        for (int round = 0; round < 5000; ++round) {
            const std::string text = texts.next();
            ASSERT_EQ(marks.removedFrom(MarkedBlock::appended(text, block)), withLastLineFeed(text))
                << ::testing::PrintToString(text);
        }
    }
}

TEST(MarkedBlock, takesNoLineOfTheUserAlongAndJoinsNoneFromAnyPlace) {
    RandomText texts{{"\n", "\n", "\r\n", "a", " ", "b\n", "c"}};
    for (int round = 0; round < 5000; ++round) {
        const std::string before = texts.next();
        const std::string after = texts.next();
        SCOPED_TRACE(::testing::PrintToString(before) + " | " + ::testing::PrintToString(after));
        const std::string rest = marks.removedFrom(before + b + after);

        std::vector<std::string> expected = filledLines(before);
        for (const std::string& line : filledLines(after))
            expected.push_back(line);
        ASSERT_EQ(filledLines(rest), expected);
        // The line end behind the block, and the blank line ahead of it.
        const bool ownLine = before.empty() || before.back() == '\n';
        const bool lineEndBehind = after.starts_with('\n') || after.starts_with("\r\n");
        const bool blankAhead =
            before == "\n" || before == "\r\n" || before.ends_with("\n\n") || before.ends_with("\n\r\n");
        const std::ptrdiff_t gone = ownLine ? lineEndBehind + blankAhead : 0;
        const std::ptrdiff_t added = !ownLine && !after.empty() && !lineEndBehind;
        ASSERT_EQ(lineFeeds(rest), lineFeeds(before) + lineFeeds(after) - gone + added);
    }
}

}  // namespace
}  // namespace quorvane
