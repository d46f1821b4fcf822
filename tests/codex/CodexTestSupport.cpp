#include "tests/codex/CodexTestSupport.h"

#include <array>
#include <cmath>
#include <cstring>
#include <ctime>
#include <ostream>
#include <system_error>

#include <fmt/format.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "tests/ingest/IngestTestSupport.h"

namespace quorvane::testing {

std::string isoTime(double secondsSince1970) {
    const double whole = std::floor(secondsSince1970);
    const auto seconds = static_cast<std::time_t>(whole);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", parts.tm_year + 1900, parts.tm_mon + 1,
                       parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                       std::lround((secondsSince1970 - whole) * 1000));
}

std::string line(std::string_view type, std::string_view payload, double when) {
    return fmt::format("{{\"timestamp\":\"{}\",\"type\":\"{}\",\"payload\":{}}}\n", isoTime(when), type, payload);
}

std::string tokenCount(const Totals& totals, double when) {
    return line("event_msg",
                fmt::format(R"({{"type":"token_count","info":{{"total_token_usage":{{"input_tokens":{},)"
                            R"("cached_input_tokens":{},"output_tokens":{}}}}},"rate_limits":null}})",
                            totals.input, totals.cached, totals.output),
                when);
}

std::string limitsLine(std::string_view rateLimits, double when) {
    return line("event_msg", fmt::format(R"({{"type":"token_count","info":null,"rate_limits":{}}})", rateLimits), when);
}

std::string windowJSON(double usedPercent, std::int64_t minutes, double resetsAt) {
    return fmt::format(R"({{"used_percent":{:.1f},"window_minutes":{},"resets_at":{:.0f}}})", usedPercent, minutes,
                       resetsAt);
}

std::string weeklyReport(double usedPercent, double resetsAt) {
    return fmt::format(R"({{"limit_id":"codex","primary":{},"secondary":null,"plan_type":"plus"}})",
                       windowJSON(usedPercent, 10080, resetsAt));
}

std::vector<std::string> told(const std::vector<UsageEvent>& events, bool details) {
    std::vector<std::string> lines;
    for (const UsageEvent& event : events) {
        const TokenUsage& usage = event.usage;
        lines.push_back(fmt::format("{} {}/{}/{}", event.requestId, usage.input, usage.cacheRead, usage.output));
        if (details) lines.back() += fmt::format(" {} {}", event.model, event.project.value_or("(none)"));
    }
    return lines;
}

std::string RolloutHome::path(std::string_view file) const {
    return home.path(".codex/sessions/" + std::string{file});
}

std::string RolloutHome::write(std::string_view file, std::string_view content) const {
    return home.write(path(file), content);
}

std::string RolloutHome::append(std::string_view file, std::string_view content) const {
    return home.append(path(file), content);
}

void RolloutHome::setAge(std::string_view file, double seconds) const {
    const double when = testNow - seconds;
    const double whole = std::floor(when);
    setModificationTime(path(file), static_cast<std::int64_t>(whole), std::lround((when - whole) * 1e9));
}

std::vector<UsageEvent> RolloutHome::parse(std::string_view content, std::int64_t chunkSize) const {
    const std::string file = write("rollout-parsed.jsonl", content);
    return CodexProvider::parseUsage(file, JSONLStreamReader{.chunkSize = chunkSize});
}

OpenCount::OpenCount(const std::vector<std::string>& files) : descriptor_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)} {
    if (descriptor_ < 0) throw std::system_error{errno, std::generic_category(), "inotify_init1"};
    for (const std::string& file : files) {
        // Two equal notices in a row become one, so those of closing are asked for too and stand in between.
        if (::inotify_add_watch(descriptor_, file.c_str(), IN_OPEN | IN_CLOSE) < 0) {
            throw std::system_error{errno, std::generic_category(), "watch " + file};
        }
    }
}

OpenCount::~OpenCount() {
    ::close(descriptor_);
}

int OpenCount::take() const {
    int opens = 0;
    alignas(inotify_event) std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t length = ::read(descriptor_, buffer.data(), buffer.size());
        if (length <= 0) return opens;
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            inotify_event notice{};
            std::memcpy(&notice, buffer.data() + at, sizeof notice);
            if ((notice.mask & IN_OPEN) != 0) ++opens;
            at += sizeof notice + notice.len;
        }
    }
}

}  // namespace quorvane::testing

namespace quorvane {

void PrintTo(const RateLimitWindow& window, std::ostream* stream) {
    *stream << fmt::format("{} % of {} min", window.usedPercent, window.windowMinutes);
    if (window.resetsAt) *stream << fmt::format(", resets at {:.3f}", window.resetsAt->secondsSince1970);
}

void PrintTo(const RateLimitSnapshot& snapshot, std::ostream* stream) {
    const auto print = [&](const char* name, const std::optional<RateLimitWindow>& window) {
        *stream << name;
        if (window) {
            PrintTo(*window, stream);
        } else {
            *stream << "absent";
        }
    };
    print("primary ", snapshot.primary);
    print("; secondary ", snapshot.secondary);
    *stream << "; plan " << snapshot.planType.value_or("absent") << "; " << snapshot.modelWindows.size()
            << " for models";
}

void PrintTo(const CodexRateLimitRecord& record, std::ostream* stream) {
    *stream << fmt::format("{:.3f}: ", record.date.secondsSince1970);
    PrintTo(record.snapshot, stream);
}

}  // namespace quorvane
