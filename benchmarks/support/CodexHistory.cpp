#include "benchmarks/support/CodexHistory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/LogText.h"
#include "benchmarks/support/Random.h"

namespace quorvane::benchmarks {
namespace {

namespace fs = std::filesystem;
using Totals = CodexHistory::Totals;

/// Raised with every change of the bytes, so that no old folder is taken for a new one.
constexpr int revision = 1;

constexpr double tokenCountShare = 0.15;

/// Pieces of JSON string content, escaped already.
constexpr std::array<std::string_view, 28> terminal{
    "\\u001b[32m✓\\u001b[39m renders the list \\u001b[2m(4 ms)\\u001b[22m\\n",
    "\\u001b[31m✗\\u001b[39m \\u001b[1mfails\\u001b[22m\\n",
    "\\u001b[0m\\u001b[38;5;12m",
    "\\u001b[1m\\u001b[33mwarning\\u001b[0m\\u001b[1m: unused variable: `x`\\u001b[0m\\n",
    "  \\u001b[1m\\u001b[38;5;14m-->\\u001b[0m src/main.rs:12:9\\n",
    "\\u001b[2K\\u001b[1G",
    "\\u001b[36m   Compiling\\u001b[0m quartz v0.3.1\\n",
    "\\u001b[90m    at Object.<anonymous>\\u001b[39m (/home/ana/shop/src/cart.test.ts:18:5)\\n",
    "\\u001b[4m/home/ana/shop/src/list.ts\\u001b[24m\\n",
    "\\u001b[32m+    const name = \\\"\\u001b[m",
    "\\u001b[31m-    let name = '\\u001b[m\\n",
    "\\u001b[36m@@ -12,7 +12,9 @@\\u001b[m\\n",
    "\\r\\u001b[K[==>    ] 12%",
    "\\u001b[?25l\\u001b[?25h",
    "drwxr-xr-x 2 ana ana 4096 ",
    "-rw-r--r-- 1 ana ana 18231 ",
    "commit 7f3a91c\\n",
    "export function total(items: Item[]): number {\\n",
    "  return items.reduce((sum, item) => sum + item.price, 0);\\n",
    "}\\n\\n",
    "import { describe, expect, it } from \\\"vitest\\\";\\n",
    "  \\\"dependencies\\\": {\\n",
    "{\\\"timestamp\\\":\\\"x\\\",\\\"type\\\":\\\"event_msg\\\",\\\"payload\\\":{\\\"type\\\":\\\"token_count\\\"}}"
    "\\n",
    "C:\\\\Users\\\\ana\\\\",
    "größe der Liste\\n",
    "日本語のログ\\n",
    "GET /api/v2/items 200 12:04:51.334 INFO ",
    "\\t\\t1234567890\\n"};

constexpr std::array<std::string_view, 24> prose{"the ",        "file ",
                                                 "returns ",    "a ",
                                                 "value ",      "and ",
                                                 "when ",       "the request ",
                                                 "is ",         "not ",
                                                 "called, so ", "we ",
                                                 "can ",        "`parse()` ",
                                                 "read ",       "\\\"src/app.ts\\\" ",
                                                 "\\n\\n",      "\\n- ",
                                                 "größer als ", "→ ",
                                                 "✓ ",          "then update the imports. ",
                                                 "日本語 ",     "déjà vu "};

/// A curve through a distribution's percentiles.
struct Anchor {
    double quantile;
    double bytes;
};

template <std::size_t Count>
double sizeAt(const std::array<Anchor, Count>& anchors, double quantile) {
    std::size_t above = 1;
    while (above + 1 < Count && anchors[above].quantile < quantile)
        ++above;
    const Anchor& from = anchors[above - 1];
    const Anchor& to = anchors[above];
    const double share = (quantile - from.quantile) / (to.quantile - from.quantile);
    return from.bytes * std::exp(std::log(to.bytes / from.bytes) * share);
}

/// All lines, token counts among them: these have about the median length.
double lineSizeAt(double quantile) {
    constexpr std::array<Anchor, 7> anchors{
        {{0, 190}, {0.5, 670}, {0.9, 4.9e3}, {0.95, 11.7e3}, {0.99, 46e3}, {0.999, 800e3}, {1, 6.9e6}}};
    return sizeAt(anchors, quantile);
}

std::vector<std::int64_t> fileSizes(const CodexHistory::Parameters& parameters) {
    constexpr std::array<Anchor, 5> anchors{{{0, 20e3}, {0.5, 500e3}, {0.9, 5e6}, {0.99, 30e6}, {1, 90e6}}};
    std::vector<double> sizes;
    double sum = 0;
    for (std::int64_t index = 0; index < parameters.files; ++index) {
        const double place = (static_cast<double>(index) + 0.5) / static_cast<double>(parameters.files);
        sizes.push_back(parameters.areEqual ? 1 : sizeAt(anchors, place));
        sum += sizes.back();
    }
    std::vector<std::int64_t> whole;
    for (const double size : sizes)
        whole.push_back(static_cast<std::int64_t>(size * static_cast<double>(parameters.bytes) / sum));
    return whole;
}

void setModificationTime(const std::string& path, double seconds) {
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{static_cast<time_t>(seconds), 0}};
    if (::utimensat(AT_FDCWD, path.c_str(), times.data(), 0) != 0)
        throw std::system_error{errno, std::generic_category(), path};
}

/// The lengths of many lines, for their percentiles.
class LineLengths {
public:
    void add(std::int64_t bytes) { lengths_.push_back(bytes); }
    [[nodiscard]] std::int64_t at(double quantile) {
        std::sort(lengths_.begin(), lengths_.end());
        return lengths_.at(static_cast<std::size_t>(quantile * static_cast<double>(lengths_.size() - 1)));
    }

private:
    std::vector<std::int64_t> lengths_;
};

/// Writes the rollouts one after the other.
class HistoryWriter {
public:
    HistoryWriter(const std::string& folder, const CodexHistory::Parameters& parameters)
        : folder_{folder}, parameters_{parameters}, random_{parameters.seed} {}

    Totals write() {
        for (const std::int64_t bytes : fileSizes(parameters_))
            writeFile(bytes);
        totals_.medianLine = lengths_.at(0.5);
        totals_.line90 = lengths_.at(0.9);
        totals_.line99 = lengths_.at(0.99);
        totals_.longestLine = lengths_.at(1);
        return totals_;
    }

private:
    struct Session {
        double seconds = 0;
        std::string_view model;
        std::string folder;
        std::int64_t input = 0;  ///< the running total, as the next two
        std::int64_t cached = 0;
        std::int64_t output = 0;
        double usedPercent = 0;
    };

    void writeFile(std::int64_t bytes) {
        Session session;
        const double length = static_cast<double>(CodexHistory::days) * 86400 - 7200;
        const double begin = CodexHistory::end().secondsSince1970 - 3600 - length * (0.05 + 0.95 * random_.unit());
        session.seconds = begin;
        session.folder = fmt::format("/home/ana/work/project-{}", random_.below(12));
        session.usedPercent = static_cast<double>(random_.below(70));
        const std::string start = timestampText(begin);
        const fs::path folder = fs::path{folder_} / start.substr(0, 4) / start.substr(5, 2) / start.substr(8, 2);
        fs::create_directories(folder);
        std::string name = start.substr(0, 19);
        std::replace(name.begin(), name.end(), ':', '-');
        const std::string path = (folder / fmt::format("rollout-{}-{}.jsonl", name, uuid(random_))).string();

        LogOutput file{path};
        // The step of the clock is such that even the largest rollout ends before the history does.
        const double lines = std::max(static_cast<double>(bytes) / 4000, 1.0);
        step_ = std::min(10.0, (CodexHistory::end().secondsSince1970 - 3600 - begin) / lines / 4);
        appendSessionMeta(file, session);
        appendTurn(file, session);
        while (file.size() < bytes) {
            appendNext(file, session);
            file.writeIfLarge();
        }
        appendTokenCount(file, session);
        file.write();
        totals_.bytes += file.size();
        ++totals_.files;
        setModificationTime(path, std::min(session.seconds, CodexHistory::end().secondsSince1970 - 3600));
    }

    void appendNext(LogOutput& file, Session& session) {
        session.seconds += step_ * random_.unit();
        if (random_.chance(tokenCountShare)) return appendTokenCount(file, session);
        if (random_.chance(0.012)) return appendTurn(file, session);
        // Token counts take the middle of the curve.
        constexpr double gapBegin = 0.5 - tokenCountShare / 2;
        const double place = random_.unit() * (1 - tokenCountShare);
        const double quantile = place < gapBegin ? place : place + tokenCountShare;
        const auto bytes = static_cast<std::int64_t>(lineSizeAt(quantile));
        if (quantile > 0.99 && random_.chance(0.5)) return appendCompacted(file, session, bytes);
        const double kind = random_.unit();
        if (kind < 0.45) return appendToolOutput(file, session, bytes);
        if (kind < 0.55) return appendCommandEnd(file, session, bytes);
        if (kind < 0.75) return appendReasoning(file, session, bytes);
        if (kind < 0.85) return appendAgentMessage(file, session, bytes);
        appendMessage(file, session, bytes);
    }

    /// `append` writes the payload.
    template <typename Append>
    void appendLine(LogOutput& file, const Session& session, std::string_view type, Append&& append) {
        std::string& to = file.text;
        const std::size_t begin = to.size();
        fmt::format_to(std::back_inserter(to), R"({{"timestamp":"{}","type":"{}","payload":)",
                       timestampText(session.seconds), type);
        append(to);
        to += '}';
        lengths_.add(static_cast<std::int64_t>(to.size() - begin));
        to += '\n';
        ++totals_.lines;
    }

    void appendSessionMeta(LogOutput& file, const Session& session) {
        appendLine(file, session, "session_meta", [&](std::string& to) {
            fmt::format_to(std::back_inserter(to),
                           R"({{"id":"{}","timestamp":"{}","cwd":"{}","originator":"codex_cli_rs",)"
                           R"("cli_version":"0.154.0","source":"cli","forked_from_id":null,"instructions":")",
                           uuid(random_), timestampText(session.seconds), session.folder);
            appendText(to, prose, std::min<std::int64_t>(12'000, parameters_.bytes / parameters_.files / 8), random_);
            to += "\"}";
        });
        ++totals_.otherLines;
    }

    void appendTurn(LogOutput& file, Session& session) {
        constexpr std::array<std::string_view, 4> models{"gpt-5.6-sol", "gpt-5.6-sol", "gpt-5.6-terra", "gpt-6-sol"};
        session.model = models[static_cast<std::size_t>(random_.below(4))];
        appendLine(file, session, "turn_context", [&](std::string& to) {
            fmt::format_to(std::back_inserter(to),
                           R"({{"cwd":"{}","approval_policy":"on-request","sandbox_policy":{{"mode":"workspace-write",)"
                           R"("network_access":false}},"model":"{}","effort":"high","summary":"auto"}})",
                           session.folder, session.model);
        });
        ++totals_.otherLines;
    }

    void appendTokenCount(LogOutput& file, Session& session) {
        // The agent repeats its total with every report of quotas.
        if (session.output == 0 || random_.chance(0.65)) {
            const std::int64_t input = random_.between(2'000, 90'000);
            const std::int64_t cached = input * random_.between(50, 95) / 100;
            const std::int64_t output = random_.between(20, 3'000);
            session.input += input;
            session.cached += cached;
            session.output += output;
            totals_.tokens += TokenUsage{.input = input - cached, .output = output, .cacheRead = cached};
            ++totals_.calls;
            session.usedPercent = std::min(100.0, session.usedPercent + 0.01);
        }
        ++totals_.tokenCounts;
        appendLine(file, session, "event_msg", [&](std::string& to) {
            fmt::format_to(
                std::back_inserter(to),
                R"({{"type":"token_count","info":{{"total_token_usage":{{"input_tokens":{0},)"
                R"("cached_input_tokens":{1},"output_tokens":{2},"reasoning_output_tokens":{3},)"
                R"("total_tokens":{4}}},"last_token_usage":{{"input_tokens":20410,)"
                R"("cached_input_tokens":18432,"output_tokens":603,"reasoning_output_tokens":211,)"
                R"("total_tokens":21013}},"model_context_window":272000}},"rate_limits":{{"limit_id":"codex",)"
                R"("limit_name":null,"primary":{{"used_percent":{5:.1f},"window_minutes":10080,)"
                R"("resets_at":1789900000}},"secondary":null,"credits":null,"plan_type":"plus"}}}})",
                session.input, session.cached, session.output, session.output / 2, session.input + session.output,
                session.usedPercent);
        });
    }

    /// A payload that ends in a text of about the length that makes the line `bytes` long.
    template <std::size_t Count>
    void appendFilled(LogOutput& file, const Session& session, std::string_view type, std::int64_t bytes,
                      const std::string& before, const std::array<std::string_view, Count>& pieces,
                      std::string_view behind) {
        constexpr std::int64_t envelope = 65;  // timestamp, type and braces
        const std::int64_t fixed = envelope + static_cast<std::int64_t>(type.size() + before.size() + behind.size());
        appendLine(file, session, type, [&](std::string& to) {
            to += before;
            appendText(to, pieces, bytes - fixed, random_);
            to += behind;
        });
    }

    void appendToolOutput(LogOutput& file, const Session& session, std::int64_t bytes) {
        const std::string before =
            fmt::format(R"({{"type":"function_call_output","call_id":"call_{:016x}","output":")", random_.next());
        appendFilled(file, session, "response_item", bytes, before, terminal, "\"}");
    }

    void appendCommandEnd(LogOutput& file, const Session& session, std::int64_t bytes) {
        const std::string before =
            fmt::format(R"({{"type":"exec_command_end","call_id":"call_{:016x}","exit_code":0,"aggregated_output":")",
                        random_.next());
        appendFilled(file, session, "event_msg", bytes, before, terminal, "\"}");
    }

    void appendAgentMessage(LogOutput& file, const Session& session, std::int64_t bytes) {
        appendFilled(file, session, "event_msg", bytes, R"({"type":"agent_message","message":")", prose, "\"}");
    }

    void appendMessage(LogOutput& file, const Session& session, std::int64_t bytes) {
        appendFilled(file, session, "response_item", bytes,
                     R"({"type":"message","role":"assistant","content":[{"type":"output_text","text":")", prose,
                     "\"}]}");
    }

    void appendReasoning(LogOutput& file, const Session& session, std::int64_t bytes) {
        appendLine(file, session, "response_item", [&](std::string& to) {
            to += R"({"type":"reasoning","summary":[],"content":null,"encrypted_content":")";
            appendBase64(to, std::min<std::int64_t>(bytes - 150, 40'000));
            to += "\"}";
        });
    }

    void appendCompacted(LogOutput& file, const Session& session, std::int64_t bytes) {
        appendLine(file, session, "compacted", [&](std::string& to) {
            to += R"({"message":"","replacement_history":[)";
            const std::size_t end = to.size() + static_cast<std::size_t>(bytes);
            for (bool isFirst = true; to.size() < end; isFirst = false) {
                if (!isFirst) to += ',';
                to += R"({"type":"message","role":"user","content":[{"type":"input_text","text":")";
                const auto left = static_cast<std::int64_t>(end) - static_cast<std::int64_t>(to.size());
                appendText(to, random_.chance(0.5) ? std::span<const std::string_view>{terminal} : prose,
                           std::min<std::int64_t>(left, random_.between(200, 30'000)), random_);
                to += "\"}]}";
            }
            to += "]}";
        });
    }

    const std::string& folder_;
    const CodexHistory::Parameters& parameters_;
    Random random_;
    LineLengths lengths_;
    double step_ = 1;
    Totals totals_;
};

/// Beside the rollouts stands what is in them; written last, it also says that they are complete.
constexpr const char* totalsFile = "totals.txt";

/// The fields of `totals`, in one order for both ways.
auto fieldsOf(auto& totals) {
    return std::array{&totals.files,           &totals.bytes,  &totals.lines,        &totals.tokenCounts,
                      &totals.otherLines,      &totals.calls,  &totals.longestLine,  &totals.medianLine,
                      &totals.line90,          &totals.line99, &totals.tokens.input, &totals.tokens.output,
                      &totals.tokens.cacheRead};
}

std::optional<Totals> readTotals(const fs::path& file) {
    std::ifstream stream{file};
    Totals totals;
    for (std::int64_t* field : fieldsOf(totals))
        stream >> *field;
    return stream ? std::optional{totals} : std::nullopt;
}

void writeTotals(const fs::path& file, const Totals& totals) {
    std::ofstream stream{file};
    for (const std::int64_t* field : fieldsOf(totals))
        stream << *field << '\n';
    if (!stream.flush()) throw std::system_error{errno, std::generic_category(), file.string()};
}

}  // namespace

std::string CodexHistory::Parameters::name() const {
    return fmt::format("codex-{}-bytes-{}{}-files-seed-{}-v{}", bytes, files, areEqual ? "-equal" : "", seed, revision);
}

CodexHistory::OnDisk CodexHistory::get(const Parameters& parameters) {
    const fs::path folder = fs::path{BenchmarkData::folder()} / parameters.name();
    const std::string sessions = (folder / "sessions").string();
    std::optional<Totals> totals = readTotals(folder / totalsFile);
    if (!totals) {
        std::fprintf(stderr, "generating %s\n", folder.c_str());
        fs::remove_all(folder);
        fs::create_directories(sessions);
        totals = HistoryWriter{sessions, parameters}.write();
        writeTotals(folder / totalsFile, *totals);
    }
    return {.sessions = sessions, .totals = *totals};
}

const CodexHistory::OnDisk& CodexHistory::typical() {
    static const OnDisk history = get({.bytes = BenchmarkData::scaled(1 << 30), .files = BenchmarkData::scaled(440)});
    return history;
}

const CodexHistory::OnDisk& CodexHistory::manyFiles() {
    static const OnDisk history =
        get({.bytes = BenchmarkData::scaled(2000) * 16384, .files = BenchmarkData::scaled(2000), .areEqual = true});
    return history;
}

const CodexHistory::OnDisk& CodexHistory::largeFile() {
    static const OnDisk history = get({.bytes = BenchmarkData::scaled(std::int64_t{2} << 30)});
    return history;
}

std::string CodexHistory::freshLine() {
    return R"({"timestamp":"2026-09-14T11:59:00.000Z","type":"event_msg","payload":{"type":"token_count",)"
           R"("info":{"total_token_usage":{"input_tokens":10,"cached_input_tokens":4,"output_tokens":1}}}})"
           "\n";
}

}  // namespace quorvane::benchmarks
