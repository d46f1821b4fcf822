#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/snapshots/MenuBarDisplayWindow.h"

namespace quorvane {

/// What a host offers for selection.
struct MenuBarLimitProvider {
    std::string id;
    std::string shortName;                      ///< to show
    std::vector<MenuBarDisplayWindow> windows;  ///< those that this provider can show
};

/// The user's choice of what a menu bar shows, which the host keeps as a text. A plain value; any thread.
struct MenuBarDisplayFormat {
    enum class Kind : std::uint8_t { Total, TotalAndLimit, Limit };

    Kind kind = Kind::Total;
    std::optional<std::string> providerID;         ///< absent with a limit: all limits take turns
    std::optional<std::string> providerShortName;  ///< to show, if known; takes no part in comparisons
    std::optional<MenuBarDisplayWindow> window;    ///< absent in choices of older versions

    /// The day's total alone, which is also the default.
    [[nodiscard]] static MenuBarDisplayFormat total() { return {}; }
    [[nodiscard]] static MenuBarDisplayFormat defaultFormat() { return total(); }

    /// The choice that a stored text stands for, texts of older versions included; the default for an absent text and
    /// for any that is no choice.
    [[nodiscard]] static MenuBarDisplayFormat normalized(std::optional<std::string_view> text);

    /// All choices that these providers allow, in the order in which they are offered. Choices that take turns are
    /// there only when there are two windows or more.
    [[nodiscard]] static std::vector<MenuBarDisplayFormat> selectable(std::span<const MenuBarLimitProvider> providers);

    /// The choice after this one among the selectable ones, the first one after the last. A choice without a window
    /// stands where the first of its kind and provider stands; one that is not there at all is followed by the first.
    [[nodiscard]] MenuBarDisplayFormat next(std::span<const MenuBarLimitProvider> providers) const;

    /// The text to store: the kind, then the provider and the window if there is a provider, joined by colons.
    [[nodiscard]] std::string rawValue() const;

    /// The short name, else the provider's id with an upper-case first letter; absent without both.
    [[nodiscard]] std::optional<std::string> providerDisplayName() const;

    /// The same with the window, where it has a name.
    [[nodiscard]] std::optional<std::string> windowedProviderDisplayName() const;

    [[nodiscard]] std::string settingsTitle() const;
    [[nodiscard]] std::string settingsSubtitle() const;

    /// Whether all limits take turns.
    [[nodiscard]] bool isRotating() const noexcept { return kind != Kind::Total && !providerID; }

    friend bool operator==(const MenuBarDisplayFormat& left, const MenuBarDisplayFormat& right) {
        return left.kind == right.kind && left.providerID == right.providerID && left.window == right.window;
    }
};

/// The name in settings; the view lives for ever.
[[nodiscard]] std::string_view rawName(MenuBarDisplayFormat::Kind kind) noexcept;

}  // namespace quorvane
