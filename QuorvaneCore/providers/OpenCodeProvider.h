#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Reads OpenCode's usage: from its database, one event a session, or from the text log of older versions where there
/// is no database. What Muse Spark used in it is left to `MuseSparkProvider`. The database may be in use; it is read at
/// one moment and never changed (see `OpenCodeStore`).
class OpenCodeProvider final : public IndexableProvider {
public:
    /// `root` is the agent's folder, its database or its log; absent means ".local/share/opencode" under the user's
    /// home directory.
    explicit OpenCodeProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Opencode; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {root_}; }
    [[nodiscard]] bool isAvailable() const override { return !dataFiles().empty(); }
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    /// One file at most: the database, else the log.
    [[nodiscard]] std::vector<std::string> dataFiles() const override;
    [[nodiscard]] bool canTailAppend() const override;
    [[nodiscard]] std::int64_t parserRevision() const override { return 1; }

    /// A database is decoded whole, whatever the offset, and `consumed` is its size, 0 if it cannot be queried.
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The calls of a log from the byte `from` on, in its order, lines of one call included.
    [[nodiscard]] static DecodedFile parseUsage(const std::string& file, std::int64_t from,
                                                const JSONLStreamReader& reader);

    /// One event for each session that used more than Muse Spark. A database that cannot be read to its end gives none.
    [[nodiscard]] static std::vector<UsageEvent> decodeDatabase(const std::string& file);

    /// The key=value fields of one line of the log.
    using Fields = std::map<std::string, std::string, std::less<>>;

    /// Takes a line apart. Fields stand between blanks, with other words among them that are passed over. A value in
    /// double quotes may hold blanks, and by a backslash any byte; one without a closing quote goes to the end of the
    /// line. Of two fields with one key the later one counts. Bytes that are no UTF-8 are repaired.
    [[nodiscard]] static Fields parseFields(std::string_view line);

    /// The call that a log line tells of; absent for none, and for one of Muse Spark.
    [[nodiscard]] static std::optional<UsageEvent> decode(const Fields& fields);

    /// The model that a session's column names, by itself or in a JSON object; "opencode" if it names none.
    [[nodiscard]] static std::string modelID(const std::optional<std::string>& fromSessionColumn);

private:
    std::string root_;
    JSONLStreamReader reader_{.chunkSize = 65536};
};

}  // namespace quorvane
