#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/pricing/RemotePricingStore.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::ScratchHome;

/// Tells what a test wants, and remembers what it was asked.
class FakeFetcher final : public PricingFetcher {
public:
    std::function<PricingFetchResult()> answer;
    mutable std::vector<std::optional<std::string>> tags;

    [[nodiscard]] std::future<PricingFetchResult> fetch(std::optional<std::string> etag) const override {
        tags.push_back(etag);
        if (!answer) throw std::runtime_error{"no future at all"};
        return std::async(std::launch::deferred, answer);
    }
};

std::string listOf(const std::string& model, const std::string& input) {
    return R"({"models": {")" + model + R"(": {"input_cost_per_token": )" + input +
           R"(, "output_cost_per_token": 2}}})";
}

class RemotePricing : public ::testing::Test {
protected:
    [[nodiscard]] RemotePricingStore store() const { return RemotePricingStore{fetcher, cache, etag}; }
    void answerWith(const std::string& body, std::optional<std::string> tag) const {
        fetcher->answer = [body, tag] { return PricingUpdated{.data = body, .etag = tag}; };
    }
    [[nodiscard]] std::string inFile(const std::string& name) const {
        return home.exists(name) ? home.read(name) : "(none)";
    }

    ScratchHome home;
    std::shared_ptr<FakeFetcher> fetcher = std::make_shared<FakeFetcher>();
    std::optional<std::string> cache = home.path("folder/list.json");
    std::optional<std::string> etag = home.path("folder/list.etag");
    std::string list = listOf("claude-opus-4-8", "1");
};

double inputPrice(const PricingTable& table, const std::string& model) {
    return table.price(model).value().inputCostPerToken;
}

TEST_F(RemotePricing, newListIsLaidOverTheShippedOneAndKept) {
    answerWith(list, "\"v1\"");
    const std::optional<PricingTable> table = store().refresh().get();
    ASSERT_TRUE(table);
    EXPECT_EQ(inputPrice(*table, "claude-opus-4-8"), 1);
    EXPECT_EQ(table->models().size(), PricingTable::bundledDefault().models().size());
    EXPECT_EQ(*table, store().resolvedTable());
    EXPECT_EQ(inFile("folder/list.json"), list);
    EXPECT_EQ(inFile("folder/list.etag"), "\"v1\"");
}

TEST_F(RemotePricing, modelsThatOnlyOneListHasKeepTheirPrice) {
    home.write("folder/list.json", listOf("brand-new-1", "3"));
    const PricingTable table = store().resolvedTable();
    const PricingTable shipped = PricingTable::bundledDefault();
    EXPECT_EQ(table.models().size(), shipped.models().size() + 1);
    EXPECT_EQ(inputPrice(table, "brand-new-1"), 3);
    for (const auto& [model, price] : shipped.models())
        EXPECT_EQ(table.price(model), price) << model;
}

TEST_F(RemotePricing, firstFetchSendsNoTagAndTheNextOneSendsWhatCame) {
    answerWith(list, "\"v1\"");
    store().refresh().wait();
    store().refresh().wait();
    EXPECT_THAT(fetcher->tags, ElementsAre(std::nullopt, "\"v1\""));
}

TEST_F(RemotePricing, notModifiedGivesNothingAndChangesNothing) {
    home.write("folder/list.json", list);
    home.write("folder/list.etag", "tag");
    fetcher->answer = [] { return PricingNotModified{}; };
    EXPECT_EQ(store().refresh().get(), std::nullopt);
    EXPECT_EQ(inFile("folder/list.json"), list);
    EXPECT_EQ(inFile("folder/list.etag"), "tag");
    EXPECT_THAT(fetcher->tags, ElementsAre("tag"));
}

TEST_F(RemotePricing, listWithoutATagTakesTheOldTagAway) {
    home.write("folder/list.etag", "old");
    for (const std::optional<std::string>& tag : {std::optional<std::string>{}, std::optional<std::string>{""}}) {
        answerWith(list, tag);
        EXPECT_TRUE(store().refresh().get());
        EXPECT_EQ(inFile("folder/list.etag"), "(none)");
    }
    EXPECT_THAT(fetcher->tags, ElementsAre("old", std::nullopt));
}

TEST_F(RemotePricing, tagIsTrimmedAndRepairedAndBlankOnesAreNone) {
    fetcher->answer = [] { return PricingNotModified{}; };
    for (const char* stored : {" \t\r\n", "", " \"v2\"\n", "a\xff"}) {
        home.write("folder/list.etag", stored);
        store().refresh().wait();
    }
    EXPECT_THAT(fetcher->tags, ElementsAre(std::nullopt, std::nullopt, "\"v2\"", "a\xef\xbf\xbd"));
}

struct RefusedCase {
    const char* name;
    const char* body;
};

class RemotePricingRefused : public RemotePricing, public ::testing::WithParamInterface<RefusedCase> {};

TEST_P(RemotePricingRefused, leavesListAndTagAsTheyWere) {
    home.write("folder/list.json", list);
    home.write("folder/list.etag", "tag");
    answerWith(GetParam().body, "new");
    EXPECT_EQ(store().refresh().get(), std::nullopt);
    EXPECT_EQ(inFile("folder/list.json"), list);
    EXPECT_EQ(inFile("folder/list.etag"), "tag");
    EXPECT_EQ(RemotePricingStore::decodeModels(GetParam().body), std::nullopt);
}

TEST_P(RemotePricingRefused, asTheKeptListLeavesTheShippedOneInForce) {
    home.write("folder/list.json", GetParam().body);
    EXPECT_EQ(store().resolvedTable(), PricingTable::bundledDefault());
    EXPECT_EQ(store().cachedModels(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    ByBody, RemotePricingRefused,
    ::testing::Values(RefusedCase{"empty", ""}, RefusedCase{"noJSON", "<html>"},
                      RefusedCase{"emptyList", R"({"models":{}})"}, RefusedCase{"noList", R"({"prices":{}})"},
                      RefusedCase{"array", "[]"},
                      RefusedCase{"missingPrice", R"({"models":{"a":{"input_cost_per_token":1}}})"},
                      RefusedCase{"priceInWords",
                                  R"({"models":{"a":{"input_cost_per_token":"1","output_cost_per_token":2}}})"}),
    [](const auto& tested) { return std::string{tested.param.name}; });

TEST_F(RemotePricing, failedFetchGivesNothing) {
    EXPECT_EQ(store().refresh().get(), std::nullopt);  // no future
    fetcher->answer = []() -> PricingFetchResult { throw RemotePricingError{500}; };
    EXPECT_EQ(store().refresh().get(), std::nullopt);
    EXPECT_EQ(inFile("folder/list.json"), "(none)");
}

TEST_F(RemotePricing, listThatCannotBeWrittenIsGivenAllTheSameAndTheTagStays) {
    home.write("folder/list.etag", "tag");
    ASSERT_EQ(::mkdir(cache->c_str(), 0700), 0);
    answerWith(list, "new");
    const std::optional<PricingTable> table = store().refresh().get();
    ASSERT_TRUE(table);
    EXPECT_EQ(inputPrice(*table, "claude-opus-4-8"), 1);
    EXPECT_EQ(inFile("folder/list.etag"), "tag");
    EXPECT_EQ(store().resolvedTable(), PricingTable::bundledDefault());
}

TEST_F(RemotePricing, folderThatCannotBeMadeIsNoFailure) {
    home.write("folder", "a file in the way");
    answerWith(list, "new");
    EXPECT_TRUE(store().refresh().get());
    EXPECT_EQ(inFile("folder"), "a file in the way");
}

TEST_F(RemotePricing, tagThatCannotBeWrittenIsNoFailure) {
    home.write("folder/other", "");
    ASSERT_EQ(::mkdir(etag->c_str(), 0700), 0);
    answerWith(list, "new");
    EXPECT_TRUE(store().refresh().get());
    EXPECT_EQ(inFile("folder/list.json"), list);
}

TEST_F(RemotePricing, withoutACacheTheNewListIsGivenAndNothingIsKept) {
    cache.reset();
    answerWith(list, "new");
    const std::optional<PricingTable> table = store().refresh().get();
    ASSERT_TRUE(table);
    EXPECT_EQ(inputPrice(*table, "claude-opus-4-8"), 1);
    EXPECT_EQ(store().resolvedTable(), PricingTable::bundledDefault());
    EXPECT_EQ(inFile("folder/list.etag"), "(none)");
}

TEST_F(RemotePricing, withoutATagFileTheListIsKept) {
    etag.reset();
    answerWith(list, "new");
    store().refresh().wait();
    store().refresh().wait();
    EXPECT_EQ(inFile("folder/list.json"), list);
    EXPECT_THAT(fetcher->tags, ElementsAre(std::nullopt, std::nullopt));
}

TEST_F(RemotePricing, refreshOutlivesItsStore) {
    answerWith(list, "new");
    std::future<std::optional<PricingTable>> later = store().refresh();
    EXPECT_TRUE(later.get());
}

TEST(RemotePricingDefaults, filesLieInTheSystemsFolderWhichIsNotMadeForALook) {
    const ScratchHome home;
    const RemotePricingStore store{"http://127.0.0.1:1/"};
    const std::string folder = home.path("Library/Application Support/Quorvane");
    EXPECT_EQ(store.cacheURL(), folder + "/pricing-remote.json");
    EXPECT_EQ(store.etagURL(), folder + "/pricing-remote.etag");
    EXPECT_EQ(store.resolvedTable(), PricingTable::bundledDefault());
    EXPECT_FALSE(home.exists("Library"));
}

TEST(RemotePricingDefaults, buildThatNobodyConfiguredAsksNobody) {
    const std::string url = RemotePricingStore::defaultRemoteURL();
    EXPECT_THAT(url, HasSubstr("https://"));
    EXPECT_TRUE(url.ends_with(".invalid/stable/pricing.json")) << url;
}

}  // namespace
}  // namespace quorvane
