#include <memory>
#include <string>
#include <system_error>

#include "QuorvaneCore/analytics/AnalyticsCSVExporter.h"
#include "QuorvaneCore/analytics/AnalyticsJSONExporter.h"
#include "QuorvaneCore/analytics/AnalyticsMarkdownExporter.h"
#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneHost/AnalyticsData.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

struct Options {
    std::int64_t days = 30;
    std::string format;
    std::string output;
};

std::string exported(const AnalyticsData& data, const std::string& format) {
    const std::vector<ModelDaySummary> rows = data.modelDays();
    if (format == "csv") return AnalyticsCSVExporter::csv(rows, data.calendar);
    if (format == "json") return AnalyticsJSONExporter::json(rows, data.calendar);
    return AnalyticsMarkdownExporter::markdown(rows, data.calendar);
}

void writeFile(const std::string& path, const std::string& text) {
    try {
        replaceFile(path, text);
    } catch (const std::system_error& error) {
        throw Failure{error.what()};
    }
}

int runExport(const Options& options) {
    const std::string text = exported(AnalyticsData::refreshed(options.days), options.format);
    if (options.output.empty()) {
        print(text);
    } else {
        writeFile(options.output, text);
    }
    return 0;
}

}  // namespace

void addExportCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("export", "Usage by provider, model and day, for other programs");
    const auto options = std::make_shared<Options>();
    addDaysOption(*command, options->days);
    command->add_option("--format", options->format, "The form of the rows")
        ->check(CLI::IsMember({"csv", "json", "markdown"}))
        ->required();
    command->add_option("--output", options->output, "A file to write instead of standard output")->type_name("FILE");
    command->callback([options, &chosen] { chosen = [options] { return runExport(*options); }; });
}

}  // namespace quorvane::host
