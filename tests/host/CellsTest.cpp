#include <gtest/gtest.h>

#include "QuorvaneHost/text/Cells.h"

namespace quorvane::host {
namespace {

TEST(Cells, controlCharactersAndBrokenBytesAreReplaced) {
    EXPECT_EQ(printable("plain"), "plain");
    EXPECT_EQ(printable("a\x1b[0m\tb"), "a\uFFFD[0m\uFFFDb");
    EXPECT_EQ(printable("\xff"), "\uFFFD");
    EXPECT_EQ(printable("\u009b31m"), "\uFFFD31m");
}

TEST(Cells, wideAndCombiningCharactersCountAsATerminalDrawsThem) {
    EXPECT_EQ(cellWidth("abc"), 3U);
    EXPECT_EQ(cellWidth("ü"), 1U);
    EXPECT_EQ(cellWidth("u\u0308"), 1U);
    EXPECT_EQ(cellWidth("日本"), 4U);
    EXPECT_EQ(cellWidth("▁█"), 2U);
}

TEST(Cells, aLongTextLosesItsMiddle) {
    EXPECT_EQ(shortened("claude-opus-4-8", 15), "claude-opus-4-8");
    EXPECT_EQ(shortened("claude-opus-4-8", 9), "clau…-4-8");
    EXPECT_EQ(shortened("abc", 1), "…");
    EXPECT_EQ(shortened("abc", 0), "");
    for (std::size_t width = 0; width < 12; ++width)
        EXPECT_LE(cellWidth(shortened("日本語のモデル", width)), width);
}

}  // namespace
}  // namespace quorvane::host
