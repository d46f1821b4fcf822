#include "QuorvaneCore/pricing/URLSessionPricingFetcher.h"

namespace quorvane {
namespace {

PricingFetchResult fetched(const std::string& url, const HTTPClient& session, const std::optional<std::string>& etag) {
    HTTPClient::Headers headers;
    // Without the tag of a damaged file the list simply comes anew.
    if (etag && !etag->empty() && HTTPClient::canSend(*etag)) headers.emplace_back("If-None-Match", *etag);
    HTTPResponse response = session.get(url, headers);
    if (!response.status) return PricingUpdated{.data = std::move(response.body), .etag = std::nullopt};
    constexpr std::int64_t notModified = 304;
    if (*response.status == notModified) return PricingNotModified{};
    if (*response.status < 200 || *response.status > 299) throw RemotePricingError{*response.status};
    return PricingUpdated{.data = std::move(response.body), .etag = std::move(response.etag)};
}

}  // namespace

std::future<PricingFetchResult> URLSessionPricingFetcher::fetch(std::optional<std::string> etag) const {
    return std::async(std::launch::deferred,
                      [url = url_, session = session_, etag = std::move(etag)] { return fetched(url, session, etag); });
}

}  // namespace quorvane
