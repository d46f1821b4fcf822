#pragma once
// Not installed: the transfer library, loaded at run time.
#include <curl/curl.h>

namespace quorvane::detail {

/// The functions of libcurl, by their names there.
struct CurlLibrary {
    decltype(&::curl_global_init) globalInit = nullptr;
    decltype(&::curl_easy_init) easyInit = nullptr;
    decltype(&::curl_easy_setopt) setOption = nullptr;
    decltype(&::curl_easy_perform) perform = nullptr;
    decltype(&::curl_easy_getinfo) getInfo = nullptr;
    decltype(&::curl_easy_header) header = nullptr;
    decltype(&::curl_easy_strerror) errorText = nullptr;
    decltype(&::curl_easy_cleanup) cleanup = nullptr;
    decltype(&::curl_slist_append) append = nullptr;
    decltype(&::curl_slist_free_all) freeAll = nullptr;

    /// Loaded and initialised once, for the life of the process. Throws `HTTPError` where the machine does not have it.
    [[nodiscard]] static const CurlLibrary& loaded();
};

}  // namespace quorvane::detail
