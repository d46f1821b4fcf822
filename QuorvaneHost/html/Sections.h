#pragma once
#include <string>

#include "QuorvaneHost/html/PageContext.h"

namespace quorvane::host {

/// Each draws one part of the page, escaped and complete in itself. All but the first, the providers and the notes are
/// for a window with calls.
[[nodiscard]] std::string totalsSection(const PageContext& context);    ///< the window in figures
[[nodiscard]] std::string dailySection(const PageContext& context);     ///< a stack of bars a day, and a table
[[nodiscard]] std::string providersTable(const PageContext& context);   ///< its legend, with the sums
[[nodiscard]] std::string calendarSection(const PageContext& context);  ///< a heat map a month
[[nodiscard]] std::string modelsSection(const PageContext& context);    ///< the top models by day, and all of them
[[nodiscard]] std::string tokenMixSection(const PageContext& context);  ///< what kinds of token
[[nodiscard]] std::string projectsSection(const PageContext& context);  ///< the projects by size
[[nodiscard]] std::string weekSection(const PageContext& context);      ///< weekday by hour
[[nodiscard]] std::string notesSection(const PageContext& context);     ///< what the figures are and are not

/// The frame of a section: `side` holds what introduces it, `main` what it shows.
[[nodiscard]] std::string sectionFrame(const std::string& id, const std::string& title, const std::string& side,
                                       const std::string& main);

/// A folded table: `table` is shown when the reader asks for it, and scrolls by itself where it is too wide.
[[nodiscard]] std::string foldedTable(const std::string& summary, const std::string& table);

}  // namespace quorvane::host
