#pragma once
#include <optional>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "QuorvaneWidgetExtension/WidgetComponents/WidgetColor.h"

namespace quorvane {

/// A horizontal gauge, filled from its leading end.
struct LimitCapsule {
    /// Of the track's colour, which at its full strength would hide a dark provider's part on it.
    static constexpr double trackOpacity = 0.18;

    double percent = 0;  ///< of the limit that is used; what lies outside of 0 to 100 counts as the nearer of them
    WidgetColor tint;    ///< of the filled part

    /// The filled part of the width, from 0 to 1.
    [[nodiscard]] double fraction() const noexcept;

    /// The gauge of a provider's short limit; absent without a percentage that is the provider's own.
    [[nodiscard]] static std::optional<LimitCapsule> of(const WidgetProviderSnapshot& provider,
                                                        const WidgetColor& tint) noexcept;

    friend bool operator==(const LimitCapsule&, const LimitCapsule&) = default;
};

}  // namespace quorvane
