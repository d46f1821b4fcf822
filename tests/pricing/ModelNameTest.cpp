#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/pricing/ModelEffort.h"
#include "QuorvaneCore/pricing/ModelName.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScopedVariables;

struct NameCase {
    const char* model;
    const char* shown;
};

class ModelShortName : public ::testing::TestWithParam<NameCase> {};

TEST_P(ModelShortName, leavesOutVendorFamilyAndDate) {
    EXPECT_EQ(ModelName::shortName(GetParam().model), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Models, ModelShortName,
    ::testing::Values(
        NameCase{"", ""}, NameCase{"claude-opus-4-8", "opus-4-8"}, NameCase{"claude-opus-4-8-20260101", "opus-4-8"},
        NameCase{"claude-opus-4-8-2026-01-01", "opus-4-8-2026-01-01"},
        NameCase{"anthropic/claude-opus-4-8", "claude-opus-4-8"}, NameCase{"claude-anthropic/openai/x", "x"},
        NameCase{"openai/gpt-5.5", "5.5"}, NameCase{"openai/anthropic/x", "anthropic/x"},
        NameCase{"Claude-Opus-4-8", "Claude-Opus-4-8"}, NameCase{"gpt-5.3-codex-spark", "5.3-spark"},
        NameCase{"gpt-5-codex", "5"}, NameCase{"gpt-codex", ""}, NameCase{"GPT-5-Codex", "5"},
        NameCase{"Gpt-5", "Gpt-5"}, NameCase{"gpt--5--codex-", "5"}, NameCase{"gpt-5-20260101", "5"},
        NameCase{"grok-4.5-build", "4.5"}, NameCase{"grok-build", "build"}, NameCase{"Grok-Build", "Grok-Build"},
        NameCase{"Grok-4.5-Build", "Grok-4.5"}, NameCase{"GROK-4.5-BUILD", "4.5"},
        NameCase{"grok-4.5-20260101-build", "4.5"}, NameCase{"grok-4.5-build-20260101", "4.5-build"},
        NameCase{"-20260101", ""}, NameCase{"x-2026010", "x-2026010"}, NameCase{"x-202601011", "x-202601011"},
        NameCase{"gemini-3-pro-preview", "gemini-3-pro-preview"}, NameCase{"ä-✓", "ä-✓"}));

struct OrderCase {
    const char* name;
    const char* first;
    const char* second;
};

class ModelDisplayOrder : public ::testing::TestWithParam<OrderCase> {};

TEST_P(ModelDisplayOrder, putsTheNewerAndStrongerFirst) {
    EXPECT_TRUE(ModelName::sortsBeforeForCompactDisplay(GetParam().first, GetParam().second));
    EXPECT_FALSE(ModelName::sortsBeforeForCompactDisplay(GetParam().second, GetParam().first));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ModelDisplayOrder,
    ::testing::Values(OrderCase{"versionBeatsCapability", "claude-sonnet-5", "claude-opus-4-8"},
                      OrderCase{"longerVersion", "gpt-5.1", "gpt-5"}, OrderCase{"numbersCountByValue", "x-10", "x-9"},
                      OrderCase{"leadingZeroIsNoSign", "grok-4.20-0309", "grok-4.20-0308"},
                      OrderCase{"celestialHigh", "gpt-5.6-sol", "gpt-5.6-terra"},
                      OrderCase{"celestialLow", "gpt-5.6-terra", "gpt-5.6-luna"},
                      OrderCase{"celestialBare", "openai/gpt-5.6", "gpt-5.6-terra"},
                      OrderCase{"classicHigh", "claude-opus-5", "claude-sonnet-5"},
                      OrderCase{"classicLow", "claude-sonnet-5", "claude-haiku-5"},
                      OrderCase{"speedHigh", "gemini-3-pro", "gemini-3-flash"},
                      OrderCase{"speedLow", "gemini-3-flash", "gemini-3-flash-lite"},
                      OrderCase{"missingNumbersAreZero", "claude-opus-5-0", "claude-sonnet-5"},
                      OrderCase{"datedBeforeUndated", "claude-opus-4-8-20260101", "claude-opus-4-8"},
                      OrderCase{"laterDateFirst", "m-1-2026-02-01", "m-1-20260131"},
                      OrderCase{"namesDescend", "zeta-1", "alpha-1"},
                      OrderCase{"otherFamiliesAreNotCompared", "opus-1", "gemini-pro-1"},
                      OrderCase{"numberBeyond64BitsIsSkipped", "x-2-99999999999999999999", "x-1"}),
    [](const auto& tested) { return std::string{tested.param.name}; });

const std::vector<std::string>& manyModels() {
    static const std::vector<std::string> models = [] {
        std::vector<std::string> all{"",
                                     "gpt-5.6",
                                     "GPT-5.6",
                                     "gpt-5.6-sol",
                                     "gpt-5.6-20260101",
                                     "a/b/c",
                                     "/claude-opus-4-8",
                                     "x-2026-01-01",
                                     "x-20260101",
                                     "x",
                                     "X",
                                     "opus",
                                     "sonnet-solar-5",
                                     "gemini",
                                     "gemini-flash-lite-pro"};
        for (const auto& [model, level] : ModelEffort::levels()) {
            all.push_back(model);
            all.push_back(model + "-20260101");
        }
        return all;
    }();
    return models;
}

TEST(ModelDisplayOrder, noModelStandsBeforeItselfAndNoTwoBeforeEachOther) {
    for (const std::string& left : manyModels()) {
        EXPECT_FALSE(ModelName::sortsBeforeForCompactDisplay(left, left)) << left;
        for (const std::string& right : manyModels()) {
            EXPECT_FALSE(ModelName::sortsBeforeForCompactDisplay(left, right) &&
                         ModelName::sortsBeforeForCompactDisplay(right, left))
                << left << " and " << right;
        }
    }
}

TEST(ModelDisplayOrder, caseAloneDoesNotSeparate) {
    EXPECT_FALSE(ModelName::sortsBeforeForCompactDisplay("x-1", "X-1"));
    EXPECT_FALSE(ModelName::sortsBeforeForCompactDisplay("X-1", "x-1"));
}

TEST(ModelDisplayOrder, sortedListIsTheSameFromEveryBeginning) {
    std::vector<std::string> models{"gpt-5.6-sol",     "gpt-5.6-terra",   "gpt-5.6-luna",     "gpt-5.5",
                                    "claude-sonnet-5", "claude-opus-4-8", "claude-haiku-4-5", "x"};
    const std::vector<std::string> sorted = models;
    std::mt19937 generator{5};
    for (int round = 0; round < 200; ++round) {
        std::shuffle(models.begin(), models.end(), generator);
        EXPECT_EQ(ModelName::sortedForCompactDisplay(models), sorted);
    }
}

TEST(ModelDisplayOrder, circleIsSortedWithoutLosingAnyone) {
    // By rank, by date, by date.
    const std::vector<std::string> circle{"claude-opus-1", "claude-haiku-1-20260201", "other-1-20260101"};
    EXPECT_TRUE(ModelName::sortsBeforeForCompactDisplay(circle[0], circle[1]));
    EXPECT_TRUE(ModelName::sortsBeforeForCompactDisplay(circle[1], circle[2]));
    EXPECT_TRUE(ModelName::sortsBeforeForCompactDisplay(circle[2], circle[0]));
    EXPECT_THAT(ModelName::sortedForCompactDisplay(circle), ::testing::UnorderedElementsAreArray(circle));
    EXPECT_THAT(ModelName::sortedForCompactDisplay({}), IsEmpty());
}

TEST(ModelEffort, tableHasItsLevels) {
    std::map<ModelEffortLevel, int> counts;
    for (const auto& [model, level] : ModelEffort::levels()) {
        ++counts[level];
        EXPECT_EQ(ModelEffort::normalizedID(model), model);
        EXPECT_EQ(ModelEffort::level(model), level);
    }
    EXPECT_EQ(counts[ModelEffortLevel::high], 31);
    EXPECT_EQ(counts[ModelEffortLevel::medium], 6);
    EXPECT_EQ(counts[ModelEffortLevel::low], 6);
    EXPECT_EQ(ModelEffort::level("claude-haiku-4-5"), ModelEffortLevel::low);
    EXPECT_EQ(ModelEffort::level("grok-composer-2.5-fast"), ModelEffortLevel::high);
    EXPECT_EQ(ModelEffort::level("grok-composer-2.5"), ModelEffortLevel::medium);
}

TEST(ModelEffort, unknownModelsRunAtTheMiddle) {
    EXPECT_EQ(ModelEffort::fallback, ModelEffortLevel::medium);
    EXPECT_EQ(ModelEffort::level("who-knows"), ModelEffortLevel::medium);
    EXPECT_EQ(ModelEffort::level(""), ModelEffortLevel::medium);
}

TEST(ModelEffort, findsModelsInTheirManySpellings) {
    EXPECT_EQ(ModelEffort::level("Anthropic/Claude-Opus-4-8-20260101"), ModelEffortLevel::high);
    EXPECT_EQ(ModelEffort::level("grok-4.5-build"), ModelEffortLevel::high);
    EXPECT_EQ(ModelEffort::level("google/Gemini-2.5-Flash-20260101"), ModelEffortLevel::low);
}

class ModelEffortID : public ::testing::TestWithParam<NameCase> {};

TEST_P(ModelEffortID, isNormalised) {
    EXPECT_EQ(ModelEffort::normalizedID(GetParam().model), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Models, ModelEffortID,
                         ::testing::Values(NameCase{"/X", "/x"}, NameCase{"a/B/c", "b/c"}, NameCase{"a/", ""},
                                           NameCase{"x-2026-01-01", "x-2026-01-01"}, NameCase{"X-20260101", "x"},
                                           NameCase{"grok-build", "grok-build"}, NameCase{"GROK-5-BUILD", "grok-5"},
                                           NameCase{"xai/grok-5-build-20260101", "grok-5"},
                                           NameCase{"grok-5-20260101-build", "grok-5-20260101"}));

TEST(ModelEffortLevels, areReadFromTheirNames) {
    std::vector<std::string_view> labels;
    for (const ModelEffortLevel level : allModelEffortLevels) {
        EXPECT_EQ(modelEffortLevelFromRawName(rawName(level)), level);
        labels.push_back(label(level));
    }
    EXPECT_THAT(labels, ElementsAre("Low", "Medium", "High"));
    EXPECT_EQ(modelEffortLevelFromRawName("High"), std::nullopt);
    EXPECT_EQ(modelEffortLevelFromRawName(""), std::nullopt);
}

}  // namespace
}  // namespace quorvane
