#pragma once
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane::host {

using Reader = std::unique_ptr<IndexableProvider>;

/// All readers of the system, in the order in which they are listed to people.
[[nodiscard]] std::vector<Reader> allReaders();

/// Whether a reader of that raw name exists.
[[nodiscard]] bool hasReader(const std::string& providerName);

/// The readers of the given raw names, in listing order; all of them if no name is given.
[[nodiscard]] std::vector<Reader> readersNamed(std::span<const std::string> providerNames);

}  // namespace quorvane::host
