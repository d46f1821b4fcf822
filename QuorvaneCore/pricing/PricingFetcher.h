#pragma once
#include <cstdint>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

namespace quorvane {

/// A new price list.
struct PricingUpdated {
    std::string data;                 ///< the body, as it came
    std::optional<std::string> etag;  ///< the server's name for this version of it

    friend bool operator==(const PricingUpdated&, const PricingUpdated&) = default;
};

/// The list is still the one whose tag was sent.
struct PricingNotModified {
    friend bool operator==(const PricingNotModified&, const PricingNotModified&) = default;
};

using PricingFetchResult = std::variant<PricingUpdated, PricingNotModified>;

/// The server answered that it has no list to give.
class RemotePricingError : public std::runtime_error {
public:
    explicit RemotePricingError(std::int64_t status)
        : std::runtime_error{"HTTP status " + std::to_string(status)}, status_{status} {}

    [[nodiscard]] std::int64_t status() const noexcept { return status_; }

private:
    std::int64_t status_;
};

/// Where a price list comes from. Any thread may use a shared one.
class PricingFetcher {
public:
    PricingFetcher() = default;
    PricingFetcher(const PricingFetcher&) = delete;
    PricingFetcher& operator=(const PricingFetcher&) = delete;
    virtual ~PricingFetcher() = default;

    /// Asks for the list, unless it is the version `etag`. The future throws what went wrong. It may do its work on the
    /// thread that waits for it, and it does not need the fetcher.
    [[nodiscard]] virtual std::future<PricingFetchResult> fetch(std::optional<std::string> etag) const = 0;
};

}  // namespace quorvane
