#include "QuorvaneCore/platform/VolumeCapacity.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>

namespace quorvane {

std::optional<std::int64_t> availableVolumeCapacity(const std::string& path) noexcept {
    std::error_code failure;
    const std::filesystem::space_info space = std::filesystem::space(path, failure);
    if (failure || space.available == static_cast<std::uintmax_t>(-1)) return std::nullopt;
    constexpr auto most = static_cast<std::uintmax_t>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::int64_t>(std::min(space.available, most));
}

}  // namespace quorvane
