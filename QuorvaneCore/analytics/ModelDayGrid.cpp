#include "QuorvaneCore/analytics/ModelDayGrid.h"

#include "QuorvaneCore/analytics/detail/ModelIdentity.h"

namespace quorvane {

std::string ModelDayGrid::Row::id() const {
    return detail::modelIdentity(provider, model);
}

}  // namespace quorvane
