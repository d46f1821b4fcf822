#pragma once
#include <string>
#include <utility>

#include "QuorvaneCore/platform/HTTPClient.h"
#include "QuorvaneCore/pricing/PricingFetcher.h"

namespace quorvane {

/// Fetches the price list over HTTP, by a conditional GET. The work is done by whoever waits for the future: the
/// library starts no thread. Fails with `HTTPError` without an answer, with `RemotePricingError` for a status outside
/// 200 to 299 (304 aside, which says that nothing changed).
class URLSessionPricingFetcher final : public PricingFetcher {
public:
    explicit URLSessionPricingFetcher(std::string url, HTTPClient session = HTTPClient::shared())
        : url_{std::move(url)}, session_{session} {}

    [[nodiscard]] const std::string& url() const noexcept { return url_; }

    [[nodiscard]] std::future<PricingFetchResult> fetch(std::optional<std::string> etag) const override;

private:
    std::string url_;
    HTTPClient session_;
};

}  // namespace quorvane
