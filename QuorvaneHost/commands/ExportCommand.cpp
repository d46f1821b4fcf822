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
#include "QuorvaneHost/html/AnalyticsPage.h"

namespace quorvane::host {
namespace {

struct Options {
    std::int64_t days = 30;
    std::string format;
    std::string output;
    std::string html;
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

/// The text of a usage error, empty for a name.
std::string checkFileName(const std::string& name) {
    return name.empty() ? "the file has no name" : std::string{};
}

int runExport(const Options& options) {
    if (!options.html.empty()) {
        writeFile(options.html, analyticsPage(AnalyticsPageData::gathered(AnalyticsData::refreshed(options.days))));
        return 0;
    }
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
    CLI::App* command =
        parser.add_subcommand("export", "Usage by provider, model and day, for other programs or as a page");
    const auto options = std::make_shared<Options>();
    addDaysOption(*command, options->days);
    CLI::Option* format = command->add_option("--format", options->format, "The form of the rows")
                              ->check(CLI::IsMember({"csv", "json", "markdown"}));
    CLI::Option* output = command->add_option("--output", options->output, "A file to write instead of standard output")
                              ->type_name("FILE");
    command->add_option("--html", options->html, "A file to write a page with tables and charts to, instead of rows")
        ->type_name("FILE")
        ->check(checkFileName)
        ->excludes(format)
        ->excludes(output);
    command->callback([options, &chosen] {
        if (options->format.empty() && options->html.empty()) throw CLI::RequiredError{"--format or --html"};
        chosen = [options] { return runExport(*options); };
    });
}

}  // namespace quorvane::host
