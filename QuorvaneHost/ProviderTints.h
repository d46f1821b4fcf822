#pragma once
#include <string_view>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane::host {

/// The fixed colour of a provider, as "#RRGGBB". Those of agents that are read were chosen to stand apart from each
/// other on light and on dark ground; the rest share one grey.
[[nodiscard]] std::string_view providerTint(ProviderID provider) noexcept;

}  // namespace quorvane::host
