#pragma once
#include <string>

namespace quorvane::host {

/// Fetches the price list from `url` and keeps it. Returns one line that tells what came of it.
/// Throws `Failure` with the address or the file, and the cause: no answer, an answer that is no price list, or a file
/// that cannot be written. Prices then stay what they were.
[[nodiscard]] std::string refreshPriceList(const std::string& url);

}  // namespace quorvane::host
