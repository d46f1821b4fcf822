#include <gtest/gtest.h>

#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {
namespace {

/// A reader that leaves out whatever has a default.
class PlainProvider final : public IndexableProvider {
public:
    [[nodiscard]] ProviderID id() const override { return ProviderID::Amp; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {"/logs"}; }
    [[nodiscard]] bool isAvailable() const override { return true; }
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override { return {}; }
    [[nodiscard]] std::vector<std::string> dataFiles() const override { return {"/logs/a"}; }
    [[nodiscard]] bool canTailAppend() const override { return true; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 3; }
    [[nodiscard]] DecodedFile decodeFile(const std::string&, std::int64_t offset) const override {
        return {.events = {}, .consumed = offset};
    }
};

TEST(IndexableProvider, resetReadsTheWholeFileUnlessTheReaderSaysOtherwise) {
    const PlainProvider provider;
    EXPECT_EQ(provider.resetPolicy(), ResetPolicy::RereadWhole);
}

TEST(IndexableProvider, thereIsNoWatermarkUnlessTheReaderHasOne) {
    const PlainProvider provider;
    EXPECT_FALSE(provider.watermarkTimestamp(0));
    EXPECT_FALSE(provider.watermarkTimestamp(1000));
}

TEST(IndexableProvider, isAUsageProvider) {
    const PlainProvider provider;
    const UsageProvider& reader = provider;
    EXPECT_EQ(reader.id(), ProviderID::Amp);
    EXPECT_EQ(DecodedFile{}.consumed, 0);
}

}  // namespace
}  // namespace quorvane
