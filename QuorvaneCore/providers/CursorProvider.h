#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/ingest/JSONLStreamReader.h"
#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Reads what the hook of `CursorHookSetup` captured, since Cursor itself keeps no log of its usage: one file, one line
/// for each finished generation. The hook appends to it and cuts it to its last lines when it grows large; the index
/// keeps what was cut off.
class CursorProvider final : public IndexableProvider {
public:
    /// `root` is the capture file; absent means `CursorHookSetup::captureURL`.
    explicit CursorProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::Cursor; }
    /// The folder of the capture file, since a file that is not there yet cannot be watched.
    [[nodiscard]] std::vector<std::string> watchPaths() const override;
    /// As soon as the capture file is there, with or without a line.
    [[nodiscard]] bool isAvailable() const override;

    /// In the order of the file, a line that stands there twice included: the hook writes each generation once. A file
    /// that has not changed since it was last read by this process is not read.
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    [[nodiscard]] std::vector<std::string> dataFiles() const override;
    [[nodiscard]] bool canTailAppend() const override { return true; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 1; }
    [[nodiscard]] ResetPolicy resetPolicy() const override { return ResetPolicy::RereadWholeRetainingIndexedEvents; }
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;

    /// The generation that one line tells of; absent for a line that tells of none or is no JSON. A token count that
    /// 64 bits cannot hold ends the process.
    [[nodiscard]] static std::optional<UsageEvent> decode(std::string_view line);

private:
    std::string root_;
    JSONLStreamReader reader_{.chunkSize = 65536};
};

}  // namespace quorvane
