#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

using Lines = std::vector<std::string>;

/// Tells whether anything opened the files it watches, since it began or since it was last asked.
class OpenWatch {
public:
    explicit OpenWatch(const std::vector<std::string>& files);
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;
    ~OpenWatch();

    [[nodiscard]] bool hasSeenAnOpen() const;

private:
    int descriptor_;
};

/// How many files this process has open.
[[nodiscard]] std::size_t openDescriptors();

/// Sets a file's modification time, to the nanosecond.
void setModificationTime(const std::string& file, std::int64_t seconds, std::int64_t nanoseconds);

/// A log line of `FakeProvider`, with its line feed.
[[nodiscard]] std::string logLine(std::string_view message, std::int64_t output, double when = 1000);

/// A reader whose every answer the test decides. Its files are logs of `logLine`s.
class FakeProvider final : public IndexableProvider {
public:
    struct Decode {
        std::string file;
        std::int64_t offset = 0;
        friend bool operator==(const Decode&, const Decode&) = default;
    };

    ProviderID provider = ProviderID::Claude;
    std::vector<std::string> files;
    bool tailAppends = true;
    std::int64_t revision = 1;
    ResetPolicy policy = ResetPolicy::RereadWhole;
    std::optional<Date> watermark;
    std::string keyPrefix;  ///< in front of a path it makes the file's key
    std::function<void()> beforeDecode = [] {};

    mutable std::vector<Decode> decodes;                ///< every call of `decodeFile`
    mutable std::vector<std::int64_t> watermarksAsked;  ///< every call of `watermarkTimestamp`

    [[nodiscard]] ProviderID id() const override { return provider; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {}; }
    [[nodiscard]] bool isAvailable() const override { return true; }
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override { return {}; }
    [[nodiscard]] std::vector<std::string> dataFiles() const override { return files; }
    [[nodiscard]] std::string storeKey(const std::string& file) const override { return keyPrefix + file; }
    [[nodiscard]] bool canTailAppend() const override { return tailAppends; }
    [[nodiscard]] std::int64_t parserRevision() const override { return revision; }
    [[nodiscard]] ResetPolicy resetPolicy() const override { return policy; }
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;
    [[nodiscard]] std::optional<Date> watermarkTimestamp(std::int64_t offset) const override;
};

/// An index in a home of its own, a reader, and one log file.
struct IndexedHome {
    IndexedHome();

    UsageIndexer::Stats refresh() const { return UsageIndexer{index}.refresh(provider); }

    /// Each stored event as "message output" with the path of its file, relative to the home, in order of the message.
    [[nodiscard]] Lines rows() const;
    /// All of each stored event, and nothing of the order of the writes.
    [[nodiscard]] static Lines allRows(const std::string& indexPath);

    /// Stores an event that no file holds, as one of `log`.
    void plant(std::string_view message, double when = 1000) const;
    /// Runs a script on the index file, through a connection of its own.
    void execute(const std::string& script) const;

    [[nodiscard]] FileState cursor(const std::string& file) const;
    /// Writes the cursor of a file as it would be after a read of it as it is now, with changes.
    void setCursor(const std::string& file, const std::function<void(FileState&)>& change) const;
    /// Changes the mode of a file until its change time moves.
    void changeMode(const std::string& file) const;

    ScratchHome home;
    std::string log = home.path("log.jsonl");
    std::shared_ptr<UsageIndex> index = std::make_shared<UsageIndex>(home.path("usage.sqlite"));
    FakeProvider provider;
};

}  // namespace quorvane::testing

namespace quorvane {

/// For messages of failed expectations.
void PrintTo(const UsageIndexer::Stats& stats, std::ostream* stream);

}  // namespace quorvane
