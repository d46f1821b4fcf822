#include "QuorvaneCore/ingest/FileCursor.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "QuorvaneCore/platform/FNV1a.h"
#include "QuorvaneCore/platform/FileHandle.h"
#include "QuorvaneCore/platform/FileStatus.h"

namespace quorvane {
namespace {

double nanoseconds(const FileStatus::Time& time) noexcept {
    return static_cast<double>(time.nanoseconds) / 1e9;
}

double changeSeconds(const FileStatus& status) noexcept {
    return nanoseconds(status.changed) + static_cast<double>(status.changed.seconds);
}

/// The index has always held modification times that passed through a date counted from 2001, which rounds the fraction
/// in its own way. Fresh values take the same road, so that they compare equal to the stored ones.
double modificationSeconds(const FileStatus& status) noexcept {
    constexpr double from1970To2001 = 978307200;
    const double since2001 =
        static_cast<double>(status.modified.seconds) - from1970To2001 + nanoseconds(status.modified);
    return since2001 + from1970To2001;
}

}  // namespace

FileChange FileCursor::classify(std::int64_t size, double mtime, std::string_view fingerprint,
                                const std::optional<FileState>& stored, bool canTailAppend) noexcept {
    if (!stored || size < stored->size) return Reset{};
    if (size == stored->size) {
        const bool comparable = !fingerprint.empty() && !stored->fingerprint.empty();
        if (comparable && fingerprint != stored->fingerprint) return Reset{};
        if (mtime == stored->mtime) return Unchanged{};
        return Reset{};
    }
    if (canTailAppend) return Appended{stored->offset};
    return Reset{};
}

std::string FileCursor::fingerprint(const std::string& file, std::int64_t size) {
    constexpr std::int64_t longestSpan = 4096;
    std::optional<FileHandle> handle = FileHandle::open(file);
    if (!handle) return {};
    const std::int64_t span = std::min(longestSpan, std::max<std::int64_t>(size, 0));
    std::array<char, longestSpan> buffer;  // NOLINT: what is hashed is written first
    const std::span<char> part{buffer.data(), static_cast<std::size_t>(span)};
    FNV1a hash;
    if (size >= 1) {
        if (const std::optional<std::size_t> count = handle->read(part)) hash.add(part.first(*count));
    }
    if (size > span) {
        if (!handle->seek(size - span)) return {};
        const std::optional<std::size_t> count = handle->read(part);
        if (!count) return {};
        hash.add(part.first(*count));
    }
    return fmt::format("{}:{:x}", size, hash.value());
}

std::optional<double> FileCursor::changeTime(const std::string& file) noexcept {
    const std::optional<FileStatus> status = FileStatus::of(file);
    return status ? std::optional{changeSeconds(*status)} : std::nullopt;
}

std::optional<FileCursor::Status> FileCursor::state(const std::string& file) noexcept {
    const std::optional<FileStatus> status = FileStatus::of(file);
    if (!status) return std::nullopt;
    return Status{.size = status->size, .mtime = modificationSeconds(*status), .ctime = changeSeconds(*status)};
}

}  // namespace quorvane
