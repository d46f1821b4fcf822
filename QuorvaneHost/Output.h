#pragma once
#include <string_view>

namespace quorvane::host {

/// Writes to standard output, with a line feed added to a text that ends without one.
/// Throws `Failure` if not all of it could be written; a reader that went away is not an error.
void print(std::string_view text);

/// The same without the added line feed.
void printExactly(std::string_view text);

}  // namespace quorvane::host
