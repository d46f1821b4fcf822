#pragma once
#include <cstdint>
#include <string>

namespace quorvane::host {

/// Figures as people read them, in the locale of the environment.
/// US dollars with two decimals.
[[nodiscard]] std::string money(double dollars);
/// A short form: "98.1M".
[[nodiscard]] std::string compactTokens(std::int64_t tokens);
/// All digits, grouped.
[[nodiscard]] std::string grouped(std::int64_t number);
/// A share of a whole in whole percent; "<1%" for a small one that is not nothing, empty for a whole of nothing.
[[nodiscard]] std::string percent(double part, double whole);
/// A figure that is a percentage already, in whole percent, halves away from zero.
[[nodiscard]] std::string wholePercent(double value);

}  // namespace quorvane::host
