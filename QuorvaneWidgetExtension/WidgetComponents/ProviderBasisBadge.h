#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane {

/// The small word beside an amount that is not, or not all, money that was spent.
struct ProviderBasisBadge {
    std::string text;

    /// "estimate" for tokens, else "notional" or "incl notional"; absent for money that was spent.
    [[nodiscard]] static std::optional<std::string_view> word(const WidgetProviderSnapshot& provider) noexcept;

    /// The badge of a provider's row.
    [[nodiscard]] static std::optional<ProviderBasisBadge> of(const WidgetProviderSnapshot& provider);

    /// The badge of a whole snapshot, in the words of its basis.
    [[nodiscard]] static std::optional<ProviderBasisBadge> of(const WidgetSnapshot& snapshot);

    friend bool operator==(const ProviderBasisBadge&, const ProviderBasisBadge&) = default;
};

}  // namespace quorvane
