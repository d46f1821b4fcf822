#pragma once
#include <compare>
#include <string>
#include <string_view>

namespace quorvane {

/// The language and region after which values are displayed. An immutable value; any thread may use it. The operating
/// system need not have the locale installed: the library brings its own data.
class Locale {
public:
    /// `name` is a locale's name as POSIX ("de_DE.UTF-8", "sr_RS@latin") or Unicode ("de-DE") writes it. "C" and
    /// "POSIX" with or without a character set, the empty text and what cannot be a locale's name count as "en_US". A
    /// language that is not known is kept and is displayed neutrally.
    explicit Locale(std::string_view name);

    /// What the environment asks for: `LC_ALL`, else `LC_MONETARY`, else `LANG`, empty values aside; "en_US" without
    /// any. Read anew at each call.
    [[nodiscard]] static Locale current();

    /// Language, script and region as far as given, joined by underscores, without character set and modifier: "de_DE".
    [[nodiscard]] const std::string& identifier() const noexcept { return identifier_; }

    friend auto operator<=>(const Locale&, const Locale&) = default;

private:
    std::string identifier_;
};

}  // namespace quorvane
