#include "QuorvaneHost/PriceListRefresh.h"

#include <exception>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/pricing/RemotePricingStore.h"
#include "QuorvaneCore/pricing/URLSessionPricingFetcher.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/text/Cells.h"

namespace quorvane::host {
namespace {

/// Hands the answer on, and remembers it: a store keeps silent about what went wrong.
class RememberingFetcher final : public PricingFetcher {
public:
    struct Memory {
        std::optional<PricingFetchResult> result;
        std::string failure;
    };

    explicit RememberingFetcher(std::string url) : fetcher_{std::move(url)} {}

    [[nodiscard]] std::future<PricingFetchResult> fetch(std::optional<std::string> etag) const override {
        return std::async(
            std::launch::deferred,
            [fetched = fetcher_.fetch(std::move(etag)).share(), memory = memory_]() -> PricingFetchResult {
                try {
                    memory->result = fetched.get();
                } catch (const std::exception& error) {
                    memory->failure = error.what();
                    throw;
                }
                return *memory->result;
            });
    }

    [[nodiscard]] const Memory& memory() const noexcept { return *memory_; }

private:
    URLSessionPricingFetcher fetcher_;
    std::shared_ptr<Memory> memory_ = std::make_shared<Memory>();
};

std::string keptModels(const RemotePricingStore& store) {
    const std::optional<PricingTable::Models> models = store.cachedModels();
    if (!models) return "no list is kept";
    return fmt::format("{} {}", models->size(), models->size() == 1 ? "model" : "models");
}

/// The tag that belongs to a list; the empty text stands for none.
std::string keptTag(const RemotePricingStore& store) {
    return store.etagURL() ? readFile(*store.etagURL()).value_or("") : "";
}

/// Throws for a list that came and is not in the file now.
void checkKept(const RemotePricingStore& store, const PricingUpdated& updated) {
    if (readFile(*store.cacheURL()) != updated.data)
        throw Failure{*store.cacheURL() + ": the fetched price list cannot be written"};
    if (keptTag(store) != updated.etag.value_or(""))
        throw Failure{*store.etagURL() + ": the tag of the price list cannot be written; the list itself is in force"};
}

}  // namespace

std::string refreshPriceList(const std::string& url) {
    const auto fetcher = std::make_shared<RememberingFetcher>(url);
    const RemotePricingStore usual{url};
    const RemotePricingStore store{fetcher, usual.cacheURL(), usual.etagURL()};
    const std::optional<PricingTable> table = store.refresh().get();
    const RememberingFetcher::Memory& memory = fetcher->memory();
    if (!memory.result) throw Failure{printable(url) + ": " + printable(memory.failure)};
    const auto* const updated = std::get_if<PricingUpdated>(&*memory.result);
    if (updated == nullptr) return "unchanged since the last fetch: " + keptModels(store);
    if (!table) throw Failure{printable(url) + ": the answer is no price list"};
    checkKept(store, *updated);
    return "fetched: " + keptModels(store) + " from " + printable(url);
}

}  // namespace quorvane::host
