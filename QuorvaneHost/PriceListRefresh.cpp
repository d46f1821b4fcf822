#include "QuorvaneHost/PriceListRefresh.h"

#include <exception>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <variant>

#include <fmt/format.h>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FolderCreation.h"
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
                    memory->result.reset();
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

/// Why a file cannot be written, learnt by one more try; absent if that one succeeds.
std::optional<std::string> causeAgainst(const std::string& file, std::string_view bytes) {
    try {
        createFolders(FilePath::parent(file));
        replaceFile(file, bytes);
        return std::nullopt;
    } catch (const std::system_error& error) {
        return error.what();
    }
}

void keepList(const std::string& file, std::string_view list) {
    if (readFile(file) == list) return;
    if (const auto cause = causeAgainst(file, list)) throw Failure{*cause + "; the fetched price list is not kept"};
}

void keepTag(const RemotePricingStore& store, const std::string& tag) {
    if (keptTag(store) == tag) return;
    const std::string& file = *store.etagURL();
    if (tag.empty()) {
        if (!removeFile(file)) throw Failure{file + ": the tag of the last price list cannot be removed"};
    } else if (const auto cause = causeAgainst(file, tag)) {
        throw Failure{*cause + "; the fetched price list is in force, but its tag is not kept"};
    }
}

bool saysUnchanged(const RememberingFetcher& fetcher) {
    const auto& result = fetcher.memory().result;
    return result && std::holds_alternative<PricingNotModified>(*result);
}

/// The store's refresh, once more without the tag where it has outlived its list: "unchanged" would be all that ever
/// came.
std::optional<PricingTable> refreshed(const RemotePricingStore& store, const RememberingFetcher& fetcher) {
    std::optional<PricingTable> table = store.refresh().get();
    if (saysUnchanged(fetcher) && !store.cachedModels() && removeFile(*store.etagURL())) table = store.refresh().get();
    return table;
}

}  // namespace

std::string refreshPriceList(const std::string& url) {
    const auto fetcher = std::make_shared<RememberingFetcher>(url);
    const RemotePricingStore usual{url};
    const RemotePricingStore store{fetcher, usual.cacheURL(), usual.etagURL()};
    const std::optional<PricingTable> table = refreshed(store, *fetcher);
    const RememberingFetcher::Memory& memory = fetcher->memory();
    if (!memory.result) throw Failure{printable(url) + ": " + printable(memory.failure)};
    const auto* const updated = std::get_if<PricingUpdated>(&*memory.result);
    if (updated == nullptr) return "unchanged since the last fetch: " + keptModels(store);
    if (!table) throw Failure{printable(url) + ": the answer is no price list"};
    keepList(*store.cacheURL(), updated->data);
    keepTag(store, updated->etag.value_or(""));
    return "fetched: " + keptModels(store) + " from " + printable(url);
}

}  // namespace quorvane::host
