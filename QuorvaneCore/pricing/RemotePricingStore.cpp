#include "QuorvaneCore/pricing/RemotePricingStore.h"

#include <exception>
#include <system_error>
#include <utility>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/TextForms.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/pricing/URLSessionPricingFetcher.h"

namespace quorvane {
namespace {

std::string supportFile(std::string_view name) {
    return FilePath::joining(UserFolders::quorvaneSupport(), name);
}

/// Whether the file was replaced.
bool write(const std::string& path, std::string_view bytes) {
    try {
        replaceFile(path, bytes);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void createFolder(const std::string& path) {
    try {
        createFolders(path);
    } catch (const std::system_error&) {
        // The write that follows fails, and tells enough.
    }
}

}  // namespace

RemotePricingStore::RemotePricingStore(std::string url)
    : RemotePricingStore{std::make_shared<URLSessionPricingFetcher>(std::move(url)), supportFile("pricing-remote.json"),
                         supportFile("pricing-remote.etag")} {}

RemotePricingStore::RemotePricingStore(std::shared_ptr<const PricingFetcher> fetcher,
                                       std::optional<std::string> cacheURL, std::optional<std::string> etagURL)
    : fetcher_{std::move(fetcher)}, cacheURL_{std::move(cacheURL)}, etagURL_{std::move(etagURL)} {}

std::string RemotePricingStore::defaultRemoteURL() {
    return "https://" QUORVANE_PRICING_HOST "/stable/pricing.json";
}

PricingTable RemotePricingStore::resolvedTable() const {
    const PricingTable shipped = PricingTable::bundledDefault();
    std::optional<PricingTable::Models> fetched = cachedModels();
    return fetched ? shipped.merging(PricingTable{std::move(*fetched)}) : shipped;
}

std::optional<PricingTable::Models> RemotePricingStore::cachedModels() const {
    const std::optional<std::string> body = cacheURL_ ? readFile(*cacheURL_) : std::nullopt;
    return body ? decodeModels(*body) : std::nullopt;
}

std::future<std::optional<PricingTable>> RemotePricingStore::refresh() const {
    return std::async(std::launch::deferred, [store = *this] { return store.refreshed(); });
}

std::optional<PricingTable> RemotePricingStore::refreshed() const {
    PricingFetchResult result;
    try {
        result = fetcher_->fetch(storedETag()).get();
    } catch (const std::exception&) {
        return std::nullopt;
    }
    const auto* const updated = std::get_if<PricingUpdated>(&result);
    if (updated == nullptr) return std::nullopt;
    std::optional<PricingTable::Models> models = decodeModels(updated->data);
    if (!models) return std::nullopt;
    persist(updated->data, updated->etag);
    return PricingTable::bundledDefault().merging(PricingTable{std::move(*models)});
}

std::optional<PricingTable::Models> RemotePricingStore::decodeModels(std::string_view body) {
    const std::optional<PricingTable> table = PricingTable::fromJSON(body);
    // A list of nothing is a mistake of the server's, not the news that nothing has a price.
    return table && !table->models().empty() ? std::optional{table->models()} : std::nullopt;
}

std::optional<std::string> RemotePricingStore::storedETag() const {
    const std::optional<std::string> bytes = etagURL_ ? readFile(*etagURL_) : std::nullopt;
    if (!bytes) return std::nullopt;
    const std::string text = repairedUTF8(*bytes);
    const std::string_view tag = trimmed(text);
    return tag.empty() ? std::nullopt : std::optional{std::string{tag}};
}

void RemotePricingStore::persist(std::string_view body, const std::optional<std::string>& etag) const {
    if (!cacheURL_) return;
    createFolder(FilePath::parent(*cacheURL_));
    if (!write(*cacheURL_, body) || !etagURL_) return;
    if (etag && !etag->empty()) {
        write(*etagURL_, *etag);
    } else {
        removeFile(*etagURL_);  // no tag of an older list beside the new one
    }
}

}  // namespace quorvane
