#include "QuorvaneCore/platform/HTTPClient.h"

#include <algorithm>
#include <array>
#include <memory>

#include <dlfcn.h>

#include "QuorvaneCore/platform/detail/CurlLibrary.h"

namespace quorvane {
namespace detail {
namespace {

template <typename Function>
void resolve(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    if (function == nullptr) throw HTTPError{std::string{"libcurl has no "} + name};
}

CurlLibrary load() {
    constexpr const char* name = "libcurl.so.4";
    void* const library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw HTTPError{std::string{name} + " is missing (package libcurl4)"};
    CurlLibrary curl;
    resolve(library, "curl_global_init", curl.globalInit);
    resolve(library, "curl_easy_init", curl.easyInit);
    resolve(library, "curl_easy_setopt", curl.setOption);
    resolve(library, "curl_easy_perform", curl.perform);
    resolve(library, "curl_easy_getinfo", curl.getInfo);
    resolve(library, "curl_easy_header", curl.header);
    resolve(library, "curl_easy_strerror", curl.errorText);
    resolve(library, "curl_easy_cleanup", curl.cleanup);
    resolve(library, "curl_slist_append", curl.append);
    resolve(library, "curl_slist_free_all", curl.freeAll);
    if (curl.globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) throw HTTPError{"libcurl cannot be initialised"};
    return curl;
}

}  // namespace

const CurlLibrary& CurlLibrary::loaded() {
    static const CurlLibrary library = load();
    return library;
}

}  // namespace detail

namespace {

using detail::CurlLibrary;

/// Whatever the case of its letters: the library does not mind it.
bool isPlainHTTP(std::string_view url) noexcept {
    constexpr std::string_view scheme = "http:";
    return url.size() >= scheme.size() && std::equal(scheme.begin(), scheme.end(), url.begin(), [](char low, char any) {
               return low == any || (any >= 'A' && any <= 'Z' && low == any - 'A' + 'a');
           });
}

/// One fetch. The addresses of its members are known to the library while it lives.
class Transfer {
public:
    Transfer(const CurlLibrary& curl, const HTTPClient::Limits& limits)
        : curl_{curl}, most_{limits.bytes}, handle_{curl.easyInit(), curl.cleanup}, headers_{nullptr, curl.freeAll} {
        if (!handle_) throw HTTPError{"no memory for a fetch"};
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits.seconds * 1000));
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, 10L);
        set(CURLOPT_PROTOCOLS_STR, "http,https,file");
        set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
        set(CURLOPT_SSL_VERIFYPEER, 1L);
        set(CURLOPT_SSL_VERIFYHOST, 2L);
        set(CURLOPT_USERAGENT, "quorvane");
        set(CURLOPT_ERRORBUFFER, errorText_.data());
        set(CURLOPT_WRITEFUNCTION, &Transfer::take);
        set(CURLOPT_WRITEDATA, this);
    }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    HTTPResponse run(const std::string& url, const HTTPClient::Headers& headers) {
        set(CURLOPT_REDIR_PROTOCOLS_STR, isPlainHTTP(url) ? "http,https" : "https");
        set(CURLOPT_URL, url.c_str());
        for (const auto& [name, value] : headers) {
            if (!HTTPClient::canSend(value)) throw HTTPError{"the header " + name + " holds a line break"};
            add(name + ": " + value);
        }
        set(CURLOPT_HTTPHEADER, headers_.get());
        const CURLcode result = curl_.perform(handle_.get());
        if (isTooLong_) throw HTTPError{"the answer is longer than " + std::to_string(most_) + " bytes"};
        if (result != CURLE_OK) throw HTTPError{cause(result)};
        return {.status = status(), .body = std::move(body_), .etag = header("ETag")};
    }

private:
    template <typename Value>
    void set(CURLoption option, Value value) {
        const CURLcode result = curl_.setOption(handle_.get(), option, value);
        if (result != CURLE_OK) throw HTTPError{cause(result)};
    }

    void add(const std::string& line) {
        curl_slist* const longer = curl_.append(headers_.get(), line.c_str());
        if (longer == nullptr) throw HTTPError{"no memory for a fetch"};
        static_cast<void>(headers_.release());
        headers_.reset(longer);
    }

    [[nodiscard]] std::string cause(CURLcode result) const {
        return errorText_.front() != '\0' ? std::string{errorText_.data()} : std::string{curl_.errorText(result)};
    }

    [[nodiscard]] std::optional<std::int64_t> status() const {
        long code = 0;
        if (curl_.getInfo(handle_.get(), CURLINFO_RESPONSE_CODE, &code) != CURLE_OK || code == 0) return std::nullopt;
        return code;
    }

    /// Of the last answer of a chain of redirects.
    [[nodiscard]] std::optional<std::string> header(const char* name) const {
        constexpr int lastRequest = -1;
        curl_header* found = nullptr;
        if (curl_.header(handle_.get(), name, 0, CURLH_HEADER, lastRequest, &found) != CURLHE_OK) return std::nullopt;
        return std::string{found->value};
    }

    static std::size_t take(char* bytes, std::size_t size, std::size_t count, void* context) noexcept {
        auto& transfer = *static_cast<Transfer*>(context);
        const std::size_t length = size * count;
        if (length > transfer.most_ - transfer.body_.size()) {
            transfer.isTooLong_ = true;
            return 0;
        }
        try {
            transfer.body_.append(bytes, length);
        } catch (...) {
            return 0;  // what the library takes for a failed write
        }
        return length;
    }

    const CurlLibrary& curl_;
    std::size_t most_;
    std::string body_;
    bool isTooLong_ = false;
    std::array<char, CURL_ERROR_SIZE> errorText_{};
    std::unique_ptr<CURL, decltype(CurlLibrary::cleanup)> handle_;
    std::unique_ptr<curl_slist, decltype(CurlLibrary::freeAll)> headers_;
};

}  // namespace

const HTTPClient& HTTPClient::shared() {
    static const HTTPClient client;
    return client;
}

bool HTTPClient::canSend(std::string_view headerValue) noexcept {
    return headerValue.find_first_of(std::string_view{"\r\n\0", 3}) == std::string_view::npos;
}

HTTPResponse HTTPClient::get(const std::string& url, const Headers& headers) const {
    return Transfer{CurlLibrary::loaded(), limits_}.run(url, headers);
}

}  // namespace quorvane
