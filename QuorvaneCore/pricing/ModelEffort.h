#pragma once
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "QuorvaneCore/platform/StringHash.h"
#include "QuorvaneCore/pricing/ModelEffortLevel.h"

namespace quorvane {

/// The effort that a model is assumed to run at: no log tells it. Pure; any thread.
class ModelEffort {
public:
    ModelEffort() = delete;

    /// The level of a model that the table does not know.
    static constexpr ModelEffortLevel fallback = ModelEffortLevel::medium;

    using Levels = std::unordered_map<std::string, ModelEffortLevel, StringHash, std::equal_to<>>;

    /// The known models, by their normalised identifiers.
    [[nodiscard]] static const Levels& levels();

    /// In lower case, without what stands before the first "/" (a "/" in first place stays), without "-yyyymmdd" at the
    /// end, and without the "-build" of a Grok model.
    [[nodiscard]] static std::string normalizedID(std::string_view model);

    [[nodiscard]] static ModelEffortLevel level(std::string_view model);
};

}  // namespace quorvane
