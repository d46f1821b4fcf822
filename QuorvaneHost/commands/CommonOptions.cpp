#include <string>
#include <vector>

#include "QuorvaneHost/Readers.h"
#include "QuorvaneHost/commands/Command.h"

namespace quorvane::host {
namespace {

/// The text of a usage error, empty for the name of a reader.
std::string checkReaderName(const std::string& name) {
    if (hasReader(name)) return {};
    std::string known;
    for (const Reader& reader : allReaders())
        known.append(known.empty() ? "" : ", ").append(rawName(reader->id()));
    return "no reader is called " + name + "; there are: " + known;
}

}  // namespace

CLI::Option* addDaysOption(CLI::App& command, std::int64_t& days) {
    constexpr std::int64_t aCentury = 36525;
    return command.add_option("--days", days, "Length of the window, today included")
        ->check(CLI::Range(std::int64_t{1}, aCentury))
        ->type_name("N")
        ->capture_default_str();
}

CLI::Option* addProviderOption(CLI::App& command, std::vector<std::string>& providers) {
    return command.add_option("--provider", providers, "Only this provider; may be given more than once")
        ->check(checkReaderName)
        ->type_name("ID")
        ->allow_extra_args(false);
}

CLI::Option* addJSONOption(CLI::App& command, bool& json) {
    return command.add_flag("--json", json, "JSON instead of a table");
}

}  // namespace quorvane::host
