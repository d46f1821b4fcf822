// Codex's rollouts: the reader, which passes over most lines after a look at their beginning and keeps calls in a form
// of its own, gives exactly what a full parse of each line and the plain rules give, whatever the chunk size; and so do
// both ways to the last report of quotas.
//
// Input: one byte for the chunk size, one for the length of the tail, and then the content of the rollout.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/providers/CodexProvider.h"
#include "QuorvaneCore/providers/CodexRateLimits.h"
#include "fuzz/FuzzTarget.h"
#include "tests/codex/LiteralTokenCounts.h"

using quorvane::CodexProvider;
using quorvane::CodexRateLimitRecord;
using quorvane::CodexRateLimits;
using quorvane::Date;
using quorvane::ISOTimestamp;
using quorvane::JSONLStreamReader;
using quorvane::JSONNumberValue;
using quorvane::JSONParser;
using quorvane::JSONValue;
using quorvane::RateLimitSnapshot;
using quorvane::RateLimitWindow;
using quorvane::UsageEvent;
using quorvane::fuzz::require;
using quorvane::testing::LiteralTokenCounts;

namespace {

constexpr std::size_t largestContent = 65536;

/// A file in memory that others can open by its path.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : descriptor_{::memfd_create("codex_decode", MFD_CLOEXEC)} {
        require(descriptor_ >= 0, "a file in memory can be made");
        while (!content.empty()) {
            const ssize_t count = ::write(descriptor_, content.data(), content.size());
            require(count > 0, "a file in memory can be written");
            content.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] std::string name() const { return std::to_string(descriptor_); }
    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + name(); }

private:
    int descriptor_;
};

std::vector<std::string_view> linesOf(std::string_view content) {
    std::vector<std::string_view> lines;
    while (!content.empty()) {
        const std::size_t length = std::min(content.find('\n'), content.size());
        if (length > 0) lines.push_back(content.substr(0, length));
        content.remove_prefix(std::min(length + 1, content.size()));
    }
    return lines;
}

/// A count, 0 for anything but a number. One that 64 bits cannot hold ends the process by design, so `fits` becomes
/// false and the reader is not asked.
std::int64_t countOf(JSONValue value, bool& fits) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return 0;
    if (const auto* integer = std::get_if<std::int64_t>(&*number)) return *integer;
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const auto* real = std::get_if<double>(&*number);
    if (real == nullptr || !(*real > -limit && *real < limit)) {
        fits = false;
        return 0;
    }
    return static_cast<std::int64_t>(*real);
}

std::optional<double> realOf(JSONValue value) {
    const std::optional<JSONNumberValue> number = value.number();
    if (!number) return std::nullopt;
    return std::visit([](auto held) { return static_cast<double>(held); }, *number);
}

std::optional<std::string> filled(JSONValue value) {
    const auto text = value.string();
    return text && !text->empty() ? std::optional{std::string{*text}} : std::nullopt;
}

std::string lastComponent(std::string path) {
    const bool isRooted = path.starts_with('/');
    while (path.ends_with('/'))
        path.pop_back();
    if (path.empty()) return isRooted ? "/" : "";
    return path.substr(path.rfind('/') + 1);
}

Date dateOf(JSONValue line) {
    return ISOTimestamp::parse(line["timestamp"].string(), Date::distantPast());
}

void takeByTheRules(JSONValue line, LiteralTokenCounts& counts) {
    const auto type = line["type"].string();
    const JSONValue payload = line["payload"];
    if (type == "session_meta" || type == "turn_context") {
        if (const auto folder = payload["cwd"].string()) counts.project = lastComponent(std::string{*folder});
    }
    if (type == "session_meta") {
        const auto model = filled(payload["model"]);
        if (!counts.model && model) counts.recordModel(*model);
    } else if (type == "turn_context") {
        const auto ofMode = filled(payload["collaboration_mode"]["settings"]["model"]);
        if (const auto model = filled(payload["model"])) {
            counts.recordModel(*model);
        } else if (ofMode) {
            counts.recordModel(*ofMode);
        }
    } else if (type == "event_msg" && payload["type"].string() == "token_count") {
        const JSONValue total = payload["info"]["total_token_usage"];
        if (!total.isObject()) return;
        const std::int64_t input = countOf(total["input_tokens"], counts.fits);
        const std::int64_t cached = countOf(total["cached_input_tokens"], counts.fits);
        const std::int64_t output = countOf(total["output_tokens"], counts.fits);
        if (counts.fits) counts.count(input, cached, output, dateOf(line));
    }
}

struct Reports {
    std::vector<CodexRateLimitRecord> inOrder;
    bool fits = true;
};

std::optional<RateLimitWindow> windowByTheRules(JSONValue json, bool& fits) {
    const auto percent = realOf(json["used_percent"]);
    if (!percent) return std::nullopt;
    RateLimitWindow window{.usedPercent = *percent, .windowMinutes = 0, .resetsAt = std::nullopt};
    if (const auto reset = realOf(json["resets_at"])) window.resetsAt = Date{*reset};
    window.windowMinutes = countOf(json["window_minutes"], fits);
    return window;
}

std::optional<CodexRateLimitRecord> reportByTheRules(JSONValue line, bool& fits) {
    const JSONValue payload = line["payload"];
    const JSONValue limits = payload["rate_limits"];
    if (line["type"].string() != "event_msg" || payload["type"].string() != "token_count") return std::nullopt;
    if (limits["limit_id"].string().value_or("codex") != "codex") return std::nullopt;
    CodexRateLimitRecord record{.date = dateOf(line), .snapshot = {}};
    record.snapshot.primary = windowByTheRules(limits["primary"], fits);
    record.snapshot.secondary = windowByTheRules(limits["secondary"], fits);
    if (!record.snapshot.primary && !record.snapshot.secondary) return std::nullopt;
    if (const auto plan = limits["plan_type"].string()) record.snapshot.planType = std::string{*plan};
    return record;
}

void requireSameEvents(const std::vector<UsageEvent>& events, const std::vector<UsageEvent>& expected) {
    require(events.size() == expected.size(), "as many events");
    for (std::size_t index = 0; index < events.size(); ++index) {
        const UsageEvent& event = events[index];
        const UsageEvent& wanted = expected[index];
        require(event.id() == wanted.id(), "identity");
        require(event.provider == wanted.provider, "provider");
        require(event.model == wanted.model, "model");
        require(event.timestamp == wanted.timestamp, "timestamp");
        require(event.usage == wanted.usage, "usage");
        require(event.project == wanted.project, "project");
    }
}

/// The last of `reports`, if it is a reading.
std::optional<CodexRateLimitRecord> readingOf(const std::vector<CodexRateLimitRecord>& reports) {
    if (reports.empty()) return std::nullopt;
    const auto before = reports.size() > 1 ? std::optional{reports[reports.size() - 2]} : std::nullopt;
    if (CodexRateLimits::isRollingZeroPlaceholder(reports.back(), before)) return std::nullopt;
    return reports.back();
}

Reports reportsOf(const std::vector<std::string_view>& lines) {
    Reports reports;
    JSONParser parser;
    for (const std::string_view line : lines) {
        if (const auto report = reportByTheRules(parser.parse(line), reports.fits)) reports.inOrder.push_back(*report);
    }
    return reports;
}

void checkReports(const MemoryFile& file, std::string_view content, const JSONLStreamReader& reader,
                  std::size_t tailBytes) {
    const std::vector<std::string_view> lines = linesOf(content);
    const Reports all = reportsOf(lines);
    if (!all.fits) return;
    require(CodexRateLimits::latestRateLimits(file.path(), reader) == readingOf(all.inOrder), "the last report");
    for (const std::string_view line : lines) {
        bool fits = true;
        JSONParser parser;
        require(CodexRateLimits::rateLimitSnapshot(line) == reportByTheRules(parser.parse(line), fits), "one line");
    }

    std::string_view tail = content;
    if (tailBytes < content.size()) {
        tail.remove_prefix(content.size() - tailBytes);
        const std::size_t feed = tail.find('\n');
        tail = feed == std::string_view::npos ? std::string_view{} : tail.substr(feed + 1);
    }
    const std::vector<CodexRateLimitRecord> inTail = reportsOf(linesOf(tail)).inOrder;
    const CodexRateLimits::TailRateLimitResult expected{.foundRecord = !inTail.empty(), .value = readingOf(inTail)};
    require(CodexRateLimits::latestRateLimitsFromTail(file.path(), tailBytes) == expected, "the last of the tail");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > largestContent) return 0;
    const JSONLStreamReader reader{.chunkSize = data[0] == 0 ? 65536 : data[0]};
    const std::size_t tailBytes = std::size_t{data[1]} * 16;
    const std::string_view content{reinterpret_cast<const char*>(data) + 2, size - 2};
    const MemoryFile file{content};

    LiteralTokenCounts expected;
    expected.messageId = file.name();
    JSONParser parser;
    for (const std::string_view line : linesOf(content))
        takeByTheRules(parser.parse(line), expected);
    if (expected.fits) requireSameEvents(CodexProvider::parseUsage(file.path(), reader), expected.events);

    checkReports(file, content, reader, tailBytes);
    return 0;
}
