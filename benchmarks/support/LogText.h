#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "benchmarks/support/Random.h"

namespace quorvane::benchmarks {

// What the generators of all agents' logs write with. The same arguments give the same bytes on every machine.

/// Appends pieces, chosen at random, until `bytes` are reached or a little more.
void appendText(std::string& to, std::span<const std::string_view> pieces, std::int64_t bytes, Random& random);

/// Appends at least as many bytes of image data. It repeats itself after some hundred kilobytes, which no reader can
/// profit from.
void appendBase64(std::string& to, std::int64_t bytes);

[[nodiscard]] std::string uuid(Random& random);

/// "2026-09-14T12:00:00.000Z"
[[nodiscard]] std::string timestampText(double secondsSince1970);

/// A log that is written in large pieces. A failure is thrown as `std::system_error`, with the path.
class LogOutput {
public:
    explicit LogOutput(const std::string& path);

    std::string text;  ///< what is not written yet

    /// In bytes, with what is not written yet.
    [[nodiscard]] std::int64_t size() const noexcept { return written_ + static_cast<std::int64_t>(text.size()); }

    void writeIfLarge() {
        if (text.size() >= 1'000'000) write();
    }

    void write();

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::string path_;
    std::unique_ptr<std::FILE, Close> file_;
    std::int64_t written_ = 0;
};

}  // namespace quorvane::benchmarks
