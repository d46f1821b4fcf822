// Each case is drawn in all sizes that show its point, and compared with a kept picture. With the environment variable
// QUORVANE_UPDATE_EXPECTED=1 the pictures are written anew; look at them before you keep them.
#include <functional>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/PictureRenderer.h"
#include "tests/desktop/Entries.h"
#include "tests/desktop/PictureComparison.h"

namespace quorvane::testing {
namespace {

using Family = QuorvaneWidgetFamily;
using enum QuorvaneWidgetFamily;
using enum WidgetColorScheme;

struct PictureCase {
    const char* name;
    std::vector<Family> families;
    std::function<void(QuorvaneWidgetEntry&)> change;
    WidgetColorScheme scheme = Light;
    const char* locale = "en_US";
    double scale = 1;
};

class Picture : public ::testing::TestWithParam<PictureCase> {};

TEST_P(Picture, isAsKept) {
    const PictureCase& row = GetParam();
    for (const Family family : row.families) {
        QuorvaneWidgetEntryView view = entryView(ownSnapshot(), family);
        row.change(view.entry);
        const QImage picture = desktop::renderedPicture(view, environmentOf(row.scheme, row.locale), row.scale);
        EXPECT_EQ(compareWithKept(picture, std::string{row.name} + "-" + std::string{rawName(family)}), "");
    }
}

const std::vector<Family> allFamilies{small, medium, large};

void asItIs(QuorvaneWidgetEntry& /*entry*/) {}

void ofOneProvider(QuorvaneWidgetEntry& entry) {
    entry.snapshot = entry.snapshot.focused("codex");
}

void ofTwoProviders(QuorvaneWidgetEntry& entry) {
    entry.snapshot.providers.resize(2);
}

void ofNoProviders(QuorvaneWidgetEntry& entry) {
    entry.snapshot.providers.clear();
    entry.snapshot.series.clear();
    entry.snapshot.totalToday = 0;
    entry.snapshot.totalWindow = 0;
    entry.snapshot.basis = WidgetCostBasis::RealSpend;
}

void ofOneDay(QuorvaneWidgetEntry& entry) {
    entry.snapshot.series = {5};
}

void ofTenProviders(QuorvaneWidgetEntry& entry) {
    for (const char* name : {"Gemini", "OpenCode", "Another", "Yet another"}) {
        WidgetProviderSnapshot row = entry.snapshot.providers[2];
        row.id = name;
        row.name = name;
        row.tintHex = "#1A7F5A";
        entry.snapshot.providers.push_back(row);
    }
}

void ofEightProviders(QuorvaneWidgetEntry& entry) {
    ofTenProviders(entry);
    entry.snapshot.providers.resize(8);
    entry.snapshot.providers[6].id = "gemini";
    entry.snapshot.providers[7].id = "opencode";
}

void preview(QuorvaneWidgetEntry& entry) {
    entry.isPreview = true;
}

void stale(QuorvaneWidgetEntry& entry) {
    entry.snapshot.staleAfter = Date{1790000100};
}

void withError(QuorvaneWidgetEntry& entry) {
    entry.snapshot.errorMessage = "The usage index could not be read: the disk is full";
}

void withNotice(QuorvaneWidgetEntry& entry) {
    entry.snapshot.availabilityNotice = "No price for aurora-9-preview and 3 more";
}

void withLongNames(QuorvaneWidgetEntry& entry) {
    entry.snapshot.title = "All providers of the research and development department";
    for (WidgetProviderSnapshot& row : entry.snapshot.providers) {
        row.id = "other";
        row.name = "Donaudampfschifffahrtsgesellschaft";
        row.basis = WidgetCostBasis::RealAndNotionalListPrice;
        row.usedPercent = 95;
        row.usageOfficial = true;
    }
    entry.snapshot.errorMessage =
        "The usage index could not be read, since its folder belongs to somebody else and the disk is full as well";
}

void huge(QuorvaneWidgetEntry& entry) {
    entry.snapshot.totalToday = 1234567890.12;
    entry.snapshot.totalWindow = 98765432109.87;
    for (WidgetProviderSnapshot& row : entry.snapshot.providers)
        row.today = 123456789.01;
}

void tiny(QuorvaneWidgetEntry& entry) {
    entry.snapshot.totalToday = 0.004;
    entry.snapshot.totalWindow = 0.01;
    entry.snapshot.series = {0, 0, 0.004, 0, 0, 0, 0.002, 0, 0, 0, 0, 0, 0, 0.004};
    for (WidgetProviderSnapshot& row : entry.snapshot.providers)
        row.today = row.metric == WidgetValueMetric::Tokens ? 3 : 0;
}

void tokens(QuorvaneWidgetEntry& entry) {
    entry.snapshot = entry.snapshot.focused("copilot");
}

void withoutLimits(QuorvaneWidgetEntry& entry) {
    entry.configuration.showLimits = false;
}

INSTANTIATE_TEST_SUITE_P(
    Widget, Picture,
    ::testing::Values(
        PictureCase{"all-light", allFamilies, asItIs}, PictureCase{"all-dark", allFamilies, asItIs, Dark},
        PictureCase{"one-light", allFamilies, ofOneProvider}, PictureCase{"one-dark", allFamilies, ofOneProvider, Dark},
        PictureCase{"two", {medium, large}, ofTwoProviders}, PictureCase{"none", allFamilies, ofNoProviders},
        PictureCase{"one-day", {small}, ofOneDay}, PictureCase{"eight", {medium, large}, ofEightProviders},
        PictureCase{"ten", {medium, large}, ofTenProviders}, PictureCase{"preview", allFamilies, preview},
        PictureCase{"stale", allFamilies, stale}, PictureCase{"stale-dark", allFamilies, stale, Dark},
        PictureCase{"error", allFamilies, withError}, PictureCase{"notice", allFamilies, withNotice},
        PictureCase{"long-names", allFamilies, withLongNames}, PictureCase{"huge", allFamilies, huge},
        PictureCase{"tiny", allFamilies, tiny}, PictureCase{"tokens", allFamilies, tokens},
        PictureCase{"no-limits", {large}, withoutLimits}, PictureCase{"german", allFamilies, asItIs, Light, "de_DE"},
        PictureCase{"right-to-left", allFamilies, asItIs, Light, "he_IL"},
        PictureCase{"right-to-left-notice", {small, large}, withNotice, Dark, "ar_EG"},
        PictureCase{"scale-125", {small}, asItIs, Light, "en_US", 1.25},
        PictureCase{"scale-150", {small}, asItIs, Light, "en_US", 1.5},
        PictureCase{"scale-200", {small, medium, large}, asItIs, Dark, "en_US", 2},
        PictureCase{"readme", {small, medium, large}, asItIs, Light, "en_US", 2}),
    [](const auto& row) {
        std::string name = row.param.name;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

TEST(PictureRendererTest, hasTheSizeOfTheFamilyInPixelsOfTheScale) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        for (const Family family : allQuorvaneWidgetFamilies) {
            const QImage picture =
                desktop::renderedPicture(entryView(ownSnapshot(), family), environmentOf(Light), scale);
            EXPECT_EQ(picture.width(), std::lround(size(family).width * scale));
            EXPECT_EQ(picture.height(), std::lround(size(family).height * scale));
        }
    }
}

TEST(PictureRendererTest, isTransparentOutsideOfTheRoundCornersAndOpaqueWithin) {
    const QImage picture = desktop::renderedPicture(entryView(ownSnapshot(), small), environmentOf(Dark), 2);
    for (const QPoint corner : {QPoint{0, 0}, QPoint{339, 0}, QPoint{0, 339}, QPoint{339, 339}}) {
        EXPECT_EQ(qAlpha(picture.pixel(corner)), 0);
    }
    EXPECT_EQ(qAlpha(picture.pixel(170, 4)), 255);
    EXPECT_EQ(qAlpha(picture.pixel(170, 170)), 255);
}

/// The share of pixels in a column of the picture that stand out from the paper.
double inkOf(const QImage& picture, int left, int right) {
    int ink = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = left; x < right; ++x) {
            if (qGray(picture.pixel(x, y)) < 110 && qAlpha(picture.pixel(x, y)) == 255) ++ink;
        }
    }
    return ink / (static_cast<double>(right - left) * picture.height());
}

TEST(PictureRendererTest, mirrorsWhereTheLocaleIsWrittenFromRightToLeft) {
    WidgetSnapshot snapshot = ownSnapshot();
    snapshot.providers.clear();
    const QImage leftToRight = desktop::renderedPicture(entryView(snapshot, medium), environmentOf(Light), 1);
    const QImage rightToLeft = desktop::renderedPicture(entryView(snapshot, medium), environmentOf(Light, "he"), 1);
    EXPECT_GT(inkOf(leftToRight, 0, 182), inkOf(leftToRight, 182, 364));
    EXPECT_LT(inkOf(rightToLeft, 0, 182), inkOf(rightToLeft, 182, 364));
}

}  // namespace
}  // namespace quorvane::testing
