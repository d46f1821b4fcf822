#pragma once
#include <string>
#include <string_view>

#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane::detail {

/// The identity of a model's row in lists of a user interface.
[[nodiscard]] inline std::string modelIdentity(ProviderID provider, std::string_view model) {
    std::string identity{rawName(provider)};
    identity += "::";
    identity += model;
    return identity;
}

}  // namespace quorvane::detail
