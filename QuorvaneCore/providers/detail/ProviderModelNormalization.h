#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// Model names of agents that put the vendor in front. Pure; any thread.
class ProviderModelNormalization {
public:
    ProviderModelNormalization() = delete;

    /// What stands behind the last slash: "muse-spark-1.1" of "meta/muse-spark-1.1". A value without a slash, or with
    /// one at its end, comes back as it is; an absent or empty one gives `fallback`.
    [[nodiscard]] static std::string strippingVendorPrefix(std::optional<std::string_view> value,
                                                           std::string_view fallback);

    /// Whether `text` has `part`, which is in lower case, in any case of its letters A to Z: the comparison that
    /// SQLite's `lower` and `LIKE` make, so that statements and readers agree on every name.
    [[nodiscard]] static bool containsIgnoringCase(std::string_view text, std::string_view part) noexcept;
};

}  // namespace quorvane
