#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane {

/// Why there is no answer, in one line for a person.
class HTTPError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a server answered.
struct HTTPResponse {
    std::optional<std::int64_t> status;  ///< absent for an answer that did not come over HTTP
    std::string body;                    ///< decompressed
    std::optional<std::string> etag;     ///< the header "ETag", if there was one
};

/// Fetches documents: HTTP and HTTPS with the system's certificates, which are always verified, and through the proxies
/// that the environment names; file addresses, too. Redirects are followed, but a fetch that begins over HTTPS stays
/// there, and none leads to a file. Nothing is cached and no cookies are kept. Any thread may use a shared one.
///
/// The library for it is loaded at the first fetch: to load it at the start of every program would take longer than all
/// the rest of a short command.
class HTTPClient {
public:
    struct Limits {
        double seconds = 15;                        ///< for the whole fetch
        std::size_t bytes = std::size_t{16} << 20;  ///< of the decompressed body; a longer one is refused
    };
    using Headers = std::vector<std::pair<std::string, std::string>>;

    HTTPClient() = default;
    explicit HTTPClient(Limits limits) noexcept : limits_{limits} {}

    /// The client of the whole process.
    [[nodiscard]] static const HTTPClient& shared();

    /// Whether a header can carry that value: one with a line break would end the header and begin another.
    [[nodiscard]] static bool canSend(std::string_view headerValue) noexcept;

    /// Whatever the status. Throws `HTTPError` where no whole answer came, and for a header that cannot be sent.
    [[nodiscard]] HTTPResponse get(const std::string& url, const Headers& headers) const;

private:
    Limits limits_;
};

}  // namespace quorvane
