#pragma once
#include <cstddef>
#include <span>
#include <string>

namespace quorvane::host {

/// A row of block characters, one a value, from nothing to the largest value. With more values than `width` cells,
/// neighbours are added up. Empty for an empty series.
[[nodiscard]] std::string sparkline(std::span<const double> values, std::size_t width);

}  // namespace quorvane::host
