#include "QuorvaneCore/providers/detail/ProviderModelNormalization.h"

#include <algorithm>

namespace quorvane {

std::string ProviderModelNormalization::strippingVendorPrefix(std::optional<std::string_view> value,
                                                              std::string_view fallback) {
    if (!value || value->empty()) return std::string{fallback};
    const std::size_t slash = value->rfind('/');
    const bool hasPrefix = slash != std::string_view::npos && slash + 1 < value->size();
    return std::string{hasPrefix ? value->substr(slash + 1) : *value};
}

bool ProviderModelNormalization::containsIgnoringCase(std::string_view text, std::string_view part) noexcept {
    const auto lower = [](char letter) noexcept {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    const auto same = [&](char left, char right) noexcept { return lower(left) == right; };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end() || part.empty();
}

}  // namespace quorvane
