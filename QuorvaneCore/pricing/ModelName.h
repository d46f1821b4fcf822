#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// What is shown of a model's identifier, and in which order models stand in a short list. Pure but for the locale of
/// the last rule of the order; any thread.
class ModelName {
public:
    ModelName() = delete;

    /// The short name: without vendor, date ("-20250514"; a dashed date stays) and the vendor's family name.
    [[nodiscard]] static std::string shortName(std::string_view model);

    /// Whether `left` stands before `right`: the newer version first, then the more capable of a family, then the later
    /// date, then the names in descending natural order. No model stands before itself, and no two before each other.
    /// Three can form a circle (two of one family and one of none, by their dates), so sort with
    /// `sortedForCompactDisplay`, which any relation suits.
    [[nodiscard]] static bool sortsBeforeForCompactDisplay(std::string_view left, std::string_view right);

    /// The models in that order. Where they form a circle, each stands before the first of those already placed that it
    /// should stand before.
    [[nodiscard]] static std::vector<std::string> sortedForCompactDisplay(std::vector<std::string> models);
};

}  // namespace quorvane
