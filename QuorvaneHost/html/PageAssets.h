#pragma once
#include <string_view>

namespace quorvane::host {

/// The files page.css and page.js, which the build puts into the program.
[[nodiscard]] std::string_view pageStyles() noexcept;
[[nodiscard]] std::string_view pageScript() noexcept;

}  // namespace quorvane::host
