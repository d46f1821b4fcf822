#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

/// The bytes that this user can still write on the volume that holds `path`; absent if they cannot be told.
[[nodiscard]] std::optional<std::int64_t> availableVolumeCapacity(const std::string& path) noexcept;

}  // namespace quorvane
