#include "QuorvaneCore/platform/LocalDay.h"

#include <chrono>

#include <fmt/format.h>

namespace quorvane {

std::string LocalDay::text() const {
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{number}}};
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                       static_cast<unsigned>(date.day()));
}

}  // namespace quorvane
