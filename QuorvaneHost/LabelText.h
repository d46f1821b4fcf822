#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/index/UsageWindowSummary.h"
#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneCore/snapshots/MenuBarDisplayFormat.h"
#include "QuorvaneCore/snapshots/MenuBarLabelRenderer.h"
#include "QuorvaneHost/LimitsReport.h"

namespace quorvane::host {

/// What a bar shows: a few characters, and all the rest for whoever asks.
struct LabelText {
    std::string title;
    std::string tooltip;
    MenuBarAttentionState attention = MenuBarAttentionState::Normal;
    bool hasStaleLimits = false;
    double fullestPercent = 0;  ///< the share of the fullest limit in use; 0 without limits

    /// `summaries` is of the providers of `limits`, over `days`.
    [[nodiscard]] static LabelText make(const UsageWindowSummaries& summaries, const LimitsReport& limits,
                                        const MenuBarDisplayFormat& format, const Locale& locale);

    /// One JSON object on one line, as waybar takes it: "text", "tooltip" (both escaped for Pango markup), "class" (the
    /// attention state, and "stale") and "percentage".
    [[nodiscard]] std::string waybar() const;
};

/// The text with the characters that Pango markup gives a meaning replaced by their entities.
[[nodiscard]] std::string escapedForPango(std::string_view text);

}  // namespace quorvane::host
