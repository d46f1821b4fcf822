#include "QuorvaneHost/RefreshProgress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <fmt/format.h>

#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {

/// Forwards everything, and counts what goes through `decodeFile`.
class RefreshProgress::Observer final : public IndexableProvider {
public:
    Observer(const IndexableProvider& reader, RefreshProgress& progress) : reader_{reader}, progress_{progress} {}

    [[nodiscard]] ProviderID id() const override { return reader_.id(); }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return reader_.watchPaths(); }
    [[nodiscard]] bool isAvailable() const override { return reader_.isAvailable(); }
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override { return reader_.loadEvents(); }
    [[nodiscard]] std::optional<RateLimitSnapshot> latestRateLimits() const override {
        return reader_.latestRateLimits();
    }
    [[nodiscard]] bool latestRateLimitAwaitingReset(Date now) const override {
        return reader_.latestRateLimitAwaitingReset(now);
    }
    [[nodiscard]] std::vector<std::string> dataFiles() const override {
        std::vector<std::string> files = reader_.dataFiles();
        progress_.filesKnown_ += static_cast<std::int64_t>(files.size());
        return files;
    }
    [[nodiscard]] std::string storeKey(const std::string& file) const override { return reader_.storeKey(file); }
    [[nodiscard]] bool canTailAppend() const override { return reader_.canTailAppend(); }
    [[nodiscard]] std::int64_t parserRevision() const override { return reader_.parserRevision(); }
    [[nodiscard]] ResetPolicy resetPolicy() const override { return reader_.resetPolicy(); }
    [[nodiscard]] std::optional<Date> watermarkTimestamp(std::int64_t offset) const override {
        return reader_.watermarkTimestamp(offset);
    }
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override {
        DecodedFile decoded = reader_.decodeFile(file, offset);
        // Offsets are bytes for a log and something else for a database, so the status is asked.
        const std::optional<FileStatus> status = FileStatus::of(file);
        const std::int64_t size = status ? status->size : 0;
        progress_.bytesRead_ += reader_.canTailAppend() ? std::clamp<std::int64_t>(size - offset, 0, size) : size;
        ++progress_.filesRead_;
        return decoded;
    }

private:
    const IndexableProvider& reader_;
    RefreshProgress& progress_;
};

RefreshProgress::RefreshProgress() {
    if (Terminal{Terminal::Stream::Error}.isTerminal()) thread_ = std::thread{[this] { run(); }};
}

RefreshProgress::~RefreshProgress() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard guard{lock_};
        isDone_ = true;
    }
    wake_.notify_one();
    thread_.join();
    if (wasDrawn_) std::fputs("\r\x1b[K", stderr);
}

std::unique_ptr<IndexableProvider> RefreshProgress::observing(const IndexableProvider& reader) {
    return std::make_unique<Observer>(reader, *this);
}

void RefreshProgress::run() {
    constexpr std::chrono::milliseconds patience{300};
    constexpr std::chrono::milliseconds step{100};
    std::unique_lock guard{lock_};
    if (wake_.wait_for(guard, patience, [this] { return isDone_; })) return;
    do {
        draw();
    } while (!wake_.wait_for(guard, step, [this] { return isDone_; }));
}

void RefreshProgress::draw() {
    constexpr std::int64_t cells = 24;
    const std::int64_t known = std::max<std::int64_t>(filesKnown_, 1);
    const std::int64_t read = std::min<std::int64_t>(filesRead_, known);
    std::string bar;
    for (std::int64_t cell = 0; cell < cells; ++cell)
        bar += cell * known < read * cells ? "█" : "░";
    const double megabytes = static_cast<double>(bytesRead_) / 1e6;
    const std::string line = fmt::format("\r\x1b[K{} {} of {} files read, {:.0f} MB", bar, read, known, megabytes);
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    wasDrawn_ = true;
}

}  // namespace quorvane::host
