#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/pricing/CostCalculator.h"
#include "QuorvaneCore/snapshots/LocalAutomationSnapshot.h"
#include "QuorvaneCore/snapshots/WidgetSnapshot.h"
#include "QuorvaneHost/LimitsReport.h"
#include "QuorvaneHost/Readers.h"

namespace quorvane::host {

/// The two files that others read, built from the index as it is and from the newest limits.
struct SnapshotFiles {
    LocalAutomationSnapshot automation;
    WidgetSnapshot widget;

    /// After so many seconds a file counts as stale.
    static constexpr double freshSeconds = 30 * 60;

    /// `days` is brought to the nearest length that the files are written for. The rows are those of the readers that
    /// are available, in catalog order.
    [[nodiscard]] static SnapshotFiles build(const UsageIndex& index, const std::vector<Reader>& readers,
                                             const LimitsReport& limits, std::int64_t days,
                                             const CostCalculator& calculator, Date now, const Calendar& calendar);

    /// Writes both files, each only if what is there is damaged, stale or says something else; always with `force`.
    /// Returns whether a file was written. Throws `std::system_error` or `SnapshotCodingError`.
    bool write(bool force) const;
};

/// The text of the automation file as it lies on the disk. Throws `std::system_error`.
[[nodiscard]] std::string writtenAutomationText();

}  // namespace quorvane::host
