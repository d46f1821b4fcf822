#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/index/SQLiteDatabase.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "QuorvaneCore/providers/OpenCodeProvider.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

constexpr std::int64_t firstMillis = 1789380000000;  // 2026-09-14T10:00:00Z

/// A row of the agent's sessions; the texts that are absent are NULL.
struct Session {
    std::optional<std::string> id = "s1";
    std::optional<std::string> model = "anthropic/claude-sonnet-5";
    std::int64_t input = 0;
    std::int64_t output = 0;
    std::int64_t reasoning = 0;
    std::int64_t cacheRead = 0;
    std::int64_t cacheWrite = 0;
    std::int64_t created = firstMillis;
    std::optional<std::string> project = "shop";
};

/// A row of the agent's messages.
struct Message {
    std::optional<std::string> id = "m1";
    std::optional<std::string> session = "s1";
    std::optional<std::string> model = "meta/muse-spark-1.1";
    std::optional<std::string> provider = "meta";
    std::int64_t created = firstMillis;
    std::int64_t input = 0;
    std::int64_t output = 0;
    std::int64_t reasoning = 0;
    std::int64_t cacheRead = 0;
    std::int64_t cacheWrite = 0;
    std::string role = "assistant";
};

/// A connection of the agent's to its database, with the two tables. While it is open in write-ahead mode, the two
/// files of that mode lie beside the database.
class Agent {
public:
    enum class Journal : std::uint8_t { WriteAhead, Rollback };

    explicit Agent(const std::string& path, Journal journal = Journal::Rollback);

    const Agent& add(const Session& session) const;
    const Agent& add(const Message& message) const;
    /// A message with `data` as it stands.
    const Agent& addMessageData(const std::string& id, const std::string& data) const;
    const Agent& execute(const std::string& sql) const;

private:
    std::shared_ptr<SQLiteDatabase> database_;
};

/// One line of the log, with its line feed: `session`, `model`, the tokens of input and output, and what else there is.
[[nodiscard]] std::string agentLogLine(std::string_view session, std::string_view model, std::int64_t input,
                                       std::int64_t output, std::string_view more = "");

/// Each event as "message request model input/output/written/read", in alphabetical order.
[[nodiscard]] std::vector<std::string> told(const std::vector<UsageEvent>& events);

/// All files of a folder with their bytes.
[[nodiscard]] std::map<std::string, std::string> filesOf(const std::string& folder);

/// A home with the agent's data, and both readers.
struct OpenCodeHome {
    ScratchHome home;
    std::string folder = home.path(".local/share/opencode");
    std::string database = folder + "/opencode.db";
    std::string log = folder + "/log/opencode.log";
    OpenCodeProvider opencode;
    MuseSparkProvider museSpark;

    OpenCodeHome() { home.makeFolder(folder); }
};

}  // namespace quorvane::testing
