#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "QuorvaneCore/index/AnalyticsMeasure.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Calendar.h"
#include "QuorvaneCore/pricing/CostCalculator.h"

namespace quorvane {

/// Activity by weekday and hour. Weekdays are the calendar's numbers, 1 to 7, where 1 is Sunday; hours are local, 0 to
/// 23. A place outside counts as an empty cell that takes nothing.
struct HourWeekdayMatrix {
    static constexpr std::int64_t weekdayCount = 7;
    static constexpr std::int64_t hourCount = 24;

    /// Real numbers, so that a matrix can be averaged or scaled.
    struct Cell {
        double events = 0;
        double tokens = 0;  ///< all five kinds of token together
        double cost = 0;    ///< US dollars; an unpriced call adds nothing

        [[nodiscard]] double value(AnalyticsMeasure measure) const noexcept;

        friend bool operator==(const Cell&, const Cell&) = default;
    };

    /// The cell with the largest value.
    struct Peak {
        std::int64_t weekday = 0;
        std::int64_t hour = 0;
        double value = 0;

        friend bool operator==(const Peak&, const Peak&) = default;
    };

    /// A row for each weekday, from number 1 on, with a cell for each hour.
    std::array<std::array<Cell, hourCount>, weekdayCount> cells{};

    /// The matrix of empty cells.
    static const HourWeekdayMatrix zero;

    void add(std::int64_t weekday, std::int64_t hour, double events, double tokens, double cost) noexcept;

    [[nodiscard]] Cell cell(std::int64_t weekday, std::int64_t hour) const noexcept;
    [[nodiscard]] double value(std::int64_t weekday, std::int64_t hour, AnalyticsMeasure measure) const noexcept;

    /// Whether no cell is above 0.
    [[nodiscard]] bool isEmpty(AnalyticsMeasure measure) const noexcept;

    /// Of equal cells the one of the lower weekday, then of the lower hour. Absent if no cell is above 0.
    [[nodiscard]] std::optional<Peak> peak(AnalyticsMeasure measure) const noexcept;

    /// Cell by cell; the empty matrix for no matrices.
    [[nodiscard]] static HourWeekdayMatrix summed(std::span<const HourWeekdayMatrix> matrices) noexcept;

    /// Adds up events of any date and provider.
    [[nodiscard]] static HourWeekdayMatrix bucketed(std::span<const UsageEvent> events,
                                                    const CostCalculator& calculator, const Calendar& calendar);

    friend bool operator==(const HourWeekdayMatrix&, const HourWeekdayMatrix&) = default;
};

inline const HourWeekdayMatrix HourWeekdayMatrix::zero{};

}  // namespace quorvane
