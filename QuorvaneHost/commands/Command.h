#pragma once
#include <cstdint>
#include <functional>

#include <CLI/CLI.hpp>

namespace quorvane::host {

/// What the command line chose, with its options bound; returns the exit status.
using ChosenCommand = std::function<int()>;

/// Each adds one command and its options to the parser, and sets `chosen` when the command line names it.
void addSummaryCommand(CLI::App& parser, ChosenCommand& chosen);
void addRefreshCommand(CLI::App& parser, ChosenCommand& chosen);
void addPricesCommand(CLI::App& parser, ChosenCommand& chosen);
void addMaintainCommand(CLI::App& parser, ChosenCommand& chosen);
void addSnapshotCommand(CLI::App& parser, ChosenCommand& chosen);
void addLimitsCommand(CLI::App& parser, ChosenCommand& chosen);
void addCaptureCommand(CLI::App& parser, ChosenCommand& chosen);
void addLabelCommand(CLI::App& parser, ChosenCommand& chosen);
void addExportCommand(CLI::App& parser, ChosenCommand& chosen);
void addProjectsCommand(CLI::App& parser, ChosenCommand& chosen);
void addActivityCommand(CLI::App& parser, ChosenCommand& chosen);
void addModelsCommand(CLI::App& parser, ChosenCommand& chosen);

/// `--days N`, at least 1.
CLI::Option* addDaysOption(CLI::App& command, std::int64_t& days);
/// `--provider ID`, any number of times, each the name of a reader.
CLI::Option* addProviderOption(CLI::App& command, std::vector<std::string>& providers);
/// `--json`.
CLI::Option* addJSONOption(CLI::App& command, bool& json);

}  // namespace quorvane::host
