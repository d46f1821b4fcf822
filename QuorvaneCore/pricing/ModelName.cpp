#include "QuorvaneCore/pricing/ModelName.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "QuorvaneCore/platform/Pattern.h"
#include "QuorvaneCore/platform/TextOrder.h"
#include "QuorvaneCore/pricing/detail/ModelIdentifier.h"

namespace quorvane {
namespace {

using detail::isDigit;
using detail::isLowerLetter;

/// The runs of characters of a kind, in order.
std::vector<std::string_view> runs(std::string_view text, bool (*belongs)(char)) {
    std::vector<std::string_view> pieces;
    for (auto begin = text.begin(); begin != text.end();) {
        const auto first = std::find_if(begin, text.end(), belongs);
        const auto behind = std::find_if_not(first, text.end(), belongs);
        if (first != behind) pieces.emplace_back(&*first, static_cast<std::size_t>(behind - first));
        begin = behind;
    }
    return pieces;
}

std::optional<std::int64_t> decimal(std::string_view digits) noexcept {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc{} && end == digits.data() + digits.size() ? std::optional{value} : std::nullopt;
}

/// The place of a model within a family of tiers.
struct Capability {
    std::string_view family;
    std::int64_t rank = 0;
};

std::optional<Capability> capabilityTier(std::string_view name) {
    const std::vector<std::string_view> words = runs(name, isLowerLetter);
    const auto has = [&](std::string_view word) { return std::find(words.begin(), words.end(), word) != words.end(); };
    const auto contains = [&](std::string_view text) { return name.find(text) != std::string_view::npos; };
    if (name == "gpt-5.6") return Capability{"codex-celestial", 3};
    if (name.starts_with("gpt-5.6-")) {
        if (has("sol")) return Capability{"codex-celestial", 3};
        if (has("terra")) return Capability{"codex-celestial", 2};
        if (has("luna")) return Capability{"codex-celestial", 1};
    }
    if (has("opus")) return Capability{"claude-classic", 3};
    if (has("sonnet")) return Capability{"claude-classic", 2};
    if (has("haiku")) return Capability{"claude-classic", 1};
    if (!contains("gemini")) return std::nullopt;
    if (has("pro")) return Capability{"gemini-speed", 3};
    if (contains("flash-lite")) return Capability{"gemini-speed", 1};  // it has the word "flash", too
    if (has("flash")) return Capability{"gemini-speed", 2};
    return std::nullopt;
}

struct DisplayOrderKey {
    std::vector<std::int64_t> version;
    std::optional<Capability> capability;
    std::int64_t snapshotDate = 0;
};

DisplayOrderKey displayOrderKey(std::string_view model) {
    static const Pattern dateAtEnd{"-([0-9]{8}|[0-9]{4}-[0-9]{2}-[0-9]{2})$"};
    const std::string lower = detail::lowerCased(model);
    std::string_view name = lower;
    if (const std::size_t slash = name.find('/'); slash != std::string_view::npos) name.remove_prefix(slash + 1);
    DisplayOrderKey key;
    if (const std::optional<std::size_t> date = dateAtEnd.search(name)) {
        std::string digits;
        std::copy_if(name.begin() + static_cast<std::ptrdiff_t>(*date), name.end(), std::back_inserter(digits),
                     isDigit);
        key.snapshotDate = decimal(digits).value_or(0);
        name = name.substr(0, *date);
    }
    for (const std::string_view digits : runs(name, isDigit)) {
        if (const std::optional<std::int64_t> number = decimal(digits)) key.version.push_back(*number);
    }
    key.capability = capabilityTier(name);
    return key;
}

/// Below 0 where `left` is the newer version; a missing number counts as 0.
int compareVersions(const std::vector<std::int64_t>& left, const std::vector<std::int64_t>& right) noexcept {
    const auto at = [](const std::vector<std::int64_t>& version, std::size_t index) noexcept {
        return index < version.size() ? version[index] : 0;
    };
    for (std::size_t index = 0; index < std::max(left.size(), right.size()); ++index) {
        if (at(left, index) != at(right, index)) return at(left, index) > at(right, index) ? -1 : 1;
    }
    return 0;
}

void removePrefix(std::string_view& text, std::string_view prefix) noexcept {
    if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
}

/// What is left of "5.3-codex-spark" without the pieces that say "codex".
std::string withoutCodex(std::string_view text) {
    std::string joined;
    for (const std::string_view piece : runs(text, [](char character) { return character != '-'; })) {
        if (detail::lowerCased(piece) == "codex") continue;
        if (!joined.empty()) joined += '-';
        joined += piece;
    }
    return joined;
}

}  // namespace

std::string ModelName::shortName(std::string_view model) {
    std::string_view name = model;
    name.remove_suffix(detail::buildTailLength(detail::lowerCased(name)));
    name = detail::withoutCompactDate(name);
    for (const std::string_view vendor : {"claude-", "anthropic/", "openai/"})
        removePrefix(name, vendor);
    if (name.starts_with("gpt-") || name.starts_with("GPT-")) return withoutCodex(name.substr(4));
    if (name.starts_with("grok-") || name.starts_with("GROK-")) name.remove_prefix(5);
    return std::string{name};
}

bool ModelName::sortsBeforeForCompactDisplay(std::string_view left, std::string_view right) {
    const DisplayOrderKey leftKey = displayOrderKey(left);
    const DisplayOrderKey rightKey = displayOrderKey(right);
    if (const int order = compareVersions(leftKey.version, rightKey.version); order != 0) return order < 0;
    const bool isOneFamily =
        leftKey.capability && rightKey.capability && leftKey.capability->family == rightKey.capability->family;
    if (isOneFamily && leftKey.capability->rank != rightKey.capability->rank)
        return leftKey.capability->rank > rightKey.capability->rank;
    if (leftKey.snapshotDate != rightKey.snapshotDate) return leftKey.snapshotDate > rightKey.snapshotDate;
    return compareNaturally(left, right) > 0;
}

std::vector<std::string> ModelName::sortedForCompactDisplay(std::vector<std::string> models) {
    std::vector<std::string> sorted;
    sorted.reserve(models.size());
    for (std::string& model : models) {
        const auto place = std::find_if(sorted.begin(), sorted.end(), [&](const std::string& placed) {
            return sortsBeforeForCompactDisplay(model, placed);
        });
        sorted.insert(place, std::move(model));
    }
    return sorted;
}

}  // namespace quorvane
