#pragma once
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/pricing/PricingFetcher.h"
#include "QuorvaneCore/pricing/PricingTable.h"

namespace quorvane {

/// A fetched price list, kept in two files and laid over the list that ships with the library. Best effort: without a
/// network, after a bad answer or with a damaged file, prices stay what they were, and nothing is thrown.
///
/// Holds no state but the names of its files, which are replaced as a whole; any thread may use a shared one. Between
/// the two writes of a refresh the new list stands beside the old tag: the next refresh then fetches it once more.
class RemotePricingStore {
public:
    /// Fetches from `url`; the files are "pricing-remote.json" and "pricing-remote.etag" in the system's folder, which
    /// is not created before there is something to keep.
    explicit RemotePricingStore(std::string url);

    /// `cacheURL` is the file for the list, byte for byte as received, `etagURL` the one for its tag. Without the first
    /// nothing is kept.
    RemotePricingStore(std::shared_ptr<const PricingFetcher> fetcher, std::optional<std::string> cacheURL,
                       std::optional<std::string> etagURL);

    /// The address that this build asks; of a build that nobody configured a name that no network resolves.
    [[nodiscard]] static std::string defaultRemoteURL();

    /// The prices in force without asking anyone: the kept list laid over the one that ships with the library.
    [[nodiscard]] PricingTable resolvedTable() const;

    /// The kept list alone; absent if there is none or it is not one.
    [[nodiscard]] std::optional<PricingTable::Models> cachedModels() const;

    /// Asks for a new list and keeps it. The prices then in force; absent when nothing changed or nothing usable came.
    /// A list that cannot be kept is given all the same. The work is done by whoever waits for the future.
    [[nodiscard]] std::future<std::optional<PricingTable>> refresh() const;

    /// The prices of a fetched body; absent for anything but a price list with at least one model.
    [[nodiscard]] static std::optional<PricingTable::Models> decodeModels(std::string_view body);

    [[nodiscard]] const std::optional<std::string>& cacheURL() const noexcept { return cacheURL_; }
    [[nodiscard]] const std::optional<std::string>& etagURL() const noexcept { return etagURL_; }

private:
    [[nodiscard]] std::optional<PricingTable> refreshed() const;
    [[nodiscard]] std::optional<std::string> storedETag() const;
    void persist(std::string_view body, const std::optional<std::string>& etag) const;

    std::shared_ptr<const PricingFetcher> fetcher_;
    std::optional<std::string> cacheURL_;
    std::optional<std::string> etagURL_;
};

}  // namespace quorvane
