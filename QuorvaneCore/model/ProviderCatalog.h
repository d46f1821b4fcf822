#pragma once
#include <span>
#include <vector>

#include "QuorvaneCore/model/ProviderDescriptor.h"
#include "QuorvaneCore/model/ProviderID.h"

namespace quorvane {

/// The fixed list of what is known of each provider. Immutable; any thread may call any operation.
class ProviderCatalog {
public:
    ProviderCatalog() = delete;

    /// One row for each provider, in the order of display (which is not that of `allProviderIDs`). Lives for ever.
    [[nodiscard]] static std::span<const ProviderDescriptor> all();

    /// The provider's row, which lives for ever; null if the list has none.
    [[nodiscard]] static const ProviderDescriptor* descriptor(ProviderID provider);

    /// The rows whose support is `Live`, in catalog order.
    [[nodiscard]] static std::vector<ProviderDescriptor> live();

    /// The rows that `source` lists, in catalog order.
    [[nodiscard]] static std::vector<ProviderDescriptor> withSource(ProviderCatalogSource source);
};

}  // namespace quorvane
