#include "QuorvaneCore/ratelimits/detail/CaptureFile.h"

#include <utility>

#include "QuorvaneCore/platform/FileContents.h"

namespace quorvane::detail {

CaptureFile::CaptureFile(std::optional<std::string> path, DecodeRaw decodeRaw) noexcept
    : path_{std::move(path)}, decodeRaw_{decodeRaw} {}

std::optional<RateLimitSnapshot> CaptureFile::loadRaw(Date now) const {
    const std::optional<std::string> bytes = path_ ? readFile(*path_) : std::nullopt;
    return bytes ? decodeRaw_(*bytes, now) : std::nullopt;
}

std::optional<RateLimitSnapshot> CaptureFile::current(const std::optional<RateLimitSnapshot>& snapshot, Date now) {
    return snapshot ? snapshot->current(now) : std::nullopt;
}

std::optional<RateLimitSnapshot> CaptureFile::load(Date now) const {
    return current(loadRaw(now), now);
}

bool CaptureFile::awaitingResetHint(Date now) const {
    const std::optional<RateLimitSnapshot> snapshot = loadRaw(now);
    return snapshot && snapshot->awaitingFreshDataAfterReset(now, RateLimitSnapshot::resetHintGrace);
}

bool CaptureFile::clear() const {
    return path_ && removeFile(*path_);
}

}  // namespace quorvane::detail
