#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// Where OpenCode keeps its state: a database, and in older versions a text log. Never both are read, which is what
/// keeps one call from being counted twice. Stateless; any thread.
class OpenCodeStorePaths {
public:
    OpenCodeStorePaths() = delete;

    /// ".local/share/opencode" under the user's home directory.
    [[nodiscard]] static std::string defaultRoot();

    /// The one file to read, if there is one: the database, else the log. `root` is the folder that holds them, or the
    /// database or the log itself, told by the extension "db" or "log".
    [[nodiscard]] static std::vector<std::string> dataFiles(const std::string& root);

    /// The database below `root`, or the log; absent where there is no such file. The log is not looked for by
    /// `dataFiles` where there is a database.
    [[nodiscard]] static std::optional<std::string> database(const std::string& root);
    [[nodiscard]] static std::optional<std::string> log(const std::string& root);

    /// Whether a data file is a database, by its extension.
    [[nodiscard]] static bool isDatabase(const std::string& file) noexcept;
};

}  // namespace quorvane
