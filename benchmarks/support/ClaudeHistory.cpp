#include "benchmarks/support/ClaudeHistory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <numeric>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "benchmarks/support/LogText.h"
#include "benchmarks/support/Random.h"

namespace quorvane::benchmarks {
namespace {

using Shape = ClaudeHistory::Shape;
using Totals = ClaudeHistory::Totals;

/// Raised with every change of the bytes, so that no old folder is taken for a new one.
constexpr int revision = 1;

constexpr std::array<std::string_view, 6> models{"claude-opus-4-8",   "claude-opus-4-8",  "claude-sonnet-4-6",
                                                 "claude-sonnet-4-6", "claude-haiku-4-5", "claude-sonnet-5"};

/// Pieces of JSON string content, escaped already.
constexpr std::array<std::string_view, 48> prose{"the ",         "file ",
                                                 "returns ",     "a ",
                                                 "value ",       "and ",
                                                 "when ",        "request ",
                                                 "handler ",     "is ",
                                                 "not ",         "called ",
                                                 "größer als ",  "naïve ",
                                                 "日本語 ",      "→ ",
                                                 "✓ ",           "let me ",
                                                 "check ",       "the test ",
                                                 "again. ",      "\\n\\n",
                                                 "\\n- ",        "`parse()` ",
                                                 "should ",      "\\\"quoted\\\" ",
                                                 "because ",     "of ",
                                                 "this ",        "change, ",
                                                 "so ",          "we ",
                                                 "can ",         "remove ",
                                                 "it ",          "safely. ",
                                                 "First, ",      "I will ",
                                                 "read ",        "src/app.ts ",
                                                 "then ",        "update ",
                                                 "imports. ",    "\\n```ts\\n",
                                                 "const x = 1;", "\\n```\\n",
                                                 "déjà vu ",     "🚀 "};

constexpr std::array<std::string_view, 40> output{
    "    at Object.<anonymous> (/home/ana/shop/src/cart.test.ts:",
    "\\n",
    "\\n",
    "\\n",
    "\\n",
    "\\u001b[32m✓\\u001b[39m renders the list \\u001b[2m(4 ms)\\u001b[22m\\n",
    "\\u001b[31m✗\\u001b[39m \\u001b[1mfails\\u001b[22m\\n",
    "export function total(items: Item[]): number {\\n",
    "  return items.reduce((sum, item) => sum + item.price, 0);\\n",
    "}\\n\\n",
    "import { describe, expect, it } from \\\"vitest\\\";\\n",
    "  expect(",
    "\\t\\t",
    "/home/ana/shop/",
    "node_modules/",
    "drwxr-xr-x 2 ana ana 4096 ",
    "-rw-r--r-- 1 ana ana 18231 ",
    "commit 7f3a91c\\n",
    "    fix: größe der Liste\\n",
    "diff --git a/src/list.ts b/src/list.ts\\n",
    "@@ -12,7 +12,9 @@\\n",
    "+    const name = \\\"",
    "-    let name = '",
    "1234567890",
    "0x7ffee3",
    "warning: unused variable `x`\\n",
    "  --> src/main.rs:",
    "Compiling quartz v0.3.1\\n",
    "  \\\"dependencies\\\": {\\n",
    "    \\\"react\\\": \\\"^19.0.0\\\",\\n",
    "C:\\\\Users\\\\ana\\\\",
    "日本語のログ\\n",
    "GET /api/v2/items 200 ",
    "12:04:51.334 ",
    "INFO ",
    "ERROR ",
    "{\\\"level\\\":\\\"info\\\",\\\"type\\\":\\\"assistant\\\"}\\n",
    "<div class=\\\"row\\\">\\n",
    "</div>\\n",
    "%s: no such file or directory\\n"};

std::string identifier(std::string_view prefix, Random& random) {
    constexpr std::string_view alphabet = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
    std::string text{prefix};
    for (int index = 0; index < 22; ++index)
        text += alphabet[random.next() % alphabet.size()];
    return text;
}

/// Many small values and a long tail: the median is `median`, the mean about `median` * exp(`spread`² / 2).
std::int64_t skewed(Random& random, double median, double spread) {
    // Twelve uniform values make a bell that is the same with every mathematics library.
    double bell = -6;
    for (int index = 0; index < 12; ++index)
        bell += random.unit();
    return static_cast<std::int64_t>(median * std::exp(bell * spread));
}

/// One call, as the logs tell it.
struct Call {
    std::string messageId;
    std::string requestId;
    std::string_view model;
    double seconds = 0;
    TokenUsage usage;                   ///< output aside
    std::vector<std::int64_t> outputs;  ///< of each line, growing
};

struct Session {
    std::string id;
    std::string cwd;
    std::string agent;  ///< of a subagent's log, else empty
    double seconds = 0;
    std::int64_t context = 0;   ///< tokens in the prompt, growing
    bool messageFirst = false;  ///< some versions write the message before the line's type
};

struct PlannedFile {
    std::int64_t bytes = 0;
    bool isSubagent = false;
    int longLines = 0;
    std::int64_t longLine = 0;
};

constexpr std::array<double, 3> largestSizes{44e6, 38e6, 34e6};

/// The sizes of a real history between its percentiles, in bytes.
double sizeAt(double quantile) {
    struct Anchor {
        double quantile;
        double bytes;
    };
    constexpr std::array<Anchor, 7> anchors{
        {{0, 2e3}, {0.5, 105e3}, {0.75, 234e3}, {0.9, 650e3}, {0.95, 1.25e6}, {0.99, 5.4e6}, {1, 8e6}}};
    std::size_t above = 1;
    while (above + 1 < anchors.size() && anchors[above].quantile < quantile)
        ++above;
    const Anchor& from = anchors[above - 1];
    const Anchor& to = anchors[above];
    const double share = (quantile - from.quantile) / (to.quantile - from.quantile);
    return from.bytes * std::exp(std::log(to.bytes / from.bytes) * share);
}

/// The sizes of all logs, those of the largest first.
std::vector<double> typicalSizes(const ClaudeHistory::Parameters& parameters, std::size_t largestCount) {
    std::vector<double> sizes{largestSizes.begin(), largestSizes.begin() + static_cast<std::ptrdiff_t>(largestCount)};
    const std::int64_t others = std::max<std::int64_t>(parameters.files - static_cast<std::int64_t>(largestCount), 1);
    const double left =
        std::accumulate(sizes.begin(), sizes.end(), static_cast<double>(parameters.bytes), std::minus{});
    double sum = 0;
    for (std::int64_t index = 0; index < others; ++index) {
        sizes.push_back(sizeAt((static_cast<double>(index) + 0.5) / static_cast<double>(others)));
        sum += sizes.back();
    }
    std::for_each(sizes.begin() + static_cast<std::ptrdiff_t>(largestCount), sizes.end(),
                  [&](double& size) { size *= left / sum; });
    return sizes;
}

std::vector<PlannedFile> typicalPlan(const ClaudeHistory::Parameters& parameters, Random& random) {
    constexpr std::int64_t enoughForTheLargest = 500'000'000;
    const bool hasLargest = parameters.bytes >= enoughForTheLargest && parameters.files > 100;
    const std::size_t largestCount = hasLargest ? largestSizes.size() : 0;
    std::vector<PlannedFile> plan;
    for (const double size : typicalSizes(parameters, largestCount)) {
        const bool isLargest = plan.size() < largestCount;
        PlannedFile file{.bytes = std::max<std::int64_t>(static_cast<std::int64_t>(size), 1500)};
        file.isSubagent = !isLargest && random.chance(0.43);
        if (isLargest) {
            file.longLines = 2;
        } else if (size > 4e6 && !file.isSubagent && random.chance(0.1)) {
            file.longLines = 1;
        }
        if (file.longLines > 0) {
            file.longLine = std::min(random.between(5'000'000, 10'000'000), file.bytes / (2 * file.longLines));
        }
        plan.push_back(file);
    }
    for (std::size_t index = plan.size(); index > 1; --index) {
        const auto other = static_cast<std::size_t>(random.below(static_cast<std::int64_t>(index)));
        std::swap(plan[index - 1], plan[other]);
    }
    return plan;
}

std::vector<PlannedFile> plannedFiles(const ClaudeHistory::Parameters& parameters, Random& random) {
    switch (parameters.shape) {
        case Shape::Typical: return typicalPlan(parameters, random);
        case Shape::OneLargeFile:
            return {{.bytes = parameters.bytes, .longLines = 10, .longLine = parameters.longLine}};
        case Shape::EqualFiles: break;
    }
    std::vector<PlannedFile> plan(static_cast<std::size_t>(parameters.files),
                                  PlannedFile{.bytes = parameters.bytes / parameters.files});
    for (PlannedFile& file : plan)
        file.isSubagent = random.chance(0.43);
    return plan;
}

/// Writes the logs one after the other.
class HistoryWriter {
public:
    HistoryWriter(const std::string& folder, const ClaudeHistory::Parameters& parameters)
        : folder_{folder}, parameters_{parameters}, random_{parameters.seed} {}

    Totals write() {
        for (const PlannedFile& file : plannedFiles(parameters_, random_))
            writeFile(file);
        return totals_;
    }

private:
    struct Project {
        std::string name;
        Session session;           ///< the last one, which subagents belong to
        std::vector<Call> recent;  ///< of the last session, to be copied when it is resumed
    };

    Project& nextProject() {
        constexpr std::array<std::string_view, 12> names{"shop",  "site",   "api",  "infra", "notes", "game",
                                                         "study", "kernel", "blog", "tools", "data",  "app"};
        constexpr std::int64_t projectCount = 36;
        if (projects_.empty()) {
            for (std::int64_t index = 0; index < projectCount; ++index) {
                const std::string_view name = names[static_cast<std::size_t>(index) % names.size()];
                projects_.push_back({.name = fmt::format("{}-{}", name, index), .session = {}, .recent = {}});
            }
        }
        // A few projects have most of the work.
        const double place = random_.unit();
        return projects_[static_cast<std::size_t>(place * place * static_cast<double>(projectCount))];
    }

    void beginSession(Project& project) {
        constexpr double length = static_cast<double>(ClaudeHistory::days) * 86400;
        project.session = Session{.id = uuid(random_),
                                  .cwd = "/home/ana/" + project.name,
                                  .agent = {},
                                  .seconds = ClaudeHistory::end().secondsSince1970 - length * random_.unit(),
                                  .context = random_.between(9000, 22000),
                                  .messageFirst = random_.chance(0.5)};
    }

    void writeFile(const PlannedFile& planned) {
        Project& project = nextProject();
        const bool isSubagent = planned.isSubagent && !project.session.id.empty();
        if (!isSubagent) beginSession(project);
        Session session = project.session;
        std::string folder = folder_ + "/-home-ana-" + project.name;
        std::string path = folder + "/" + session.id + ".jsonl";
        if (isSubagent) {
            session.agent = fmt::format("{:08x}", random_.next() >> 32);
            session.context = random_.between(4000, 9000);
            folder += "/" + session.id + "/subagents";
            path = folder + "/agent-" + session.agent + ".jsonl";
        }
        std::filesystem::create_directories(folder);
        LogOutput file{path};
        writeLines(file, planned, session, project);
        file.write();
        totals_.files += 1;
        totals_.bytes += file.size();
    }

    void writeLines(LogOutput& file, const PlannedFile& planned, Session& session, Project& project) {
        // No single text may outgrow a small log.
        longestText_ = std::max<std::int64_t>(planned.bytes / 6, 200);
        int longLines = 0;
        const bool isResumed = session.agent.empty() && !project.recent.empty() && random_.chance(0.15);
        if (session.agent.empty()) appendSummary(file, session);
        if (isResumed) {
            for (const Call& call : project.recent) {
                if (file.size() > planned.bytes / 2) break;
                appendCall(file, session, call);
            }
        }
        if (session.agent.empty()) project.recent.clear();
        while (file.size() < planned.bytes) {
            const std::int64_t due = planned.bytes * (longLines + 1) / (planned.longLines + 1) - planned.longLine;
            if (longLines < planned.longLines && file.size() >= due) {
                appendImage(file, session, planned.longLine);
                ++longLines;
            }
            const Call call = nextCall(session);
            appendTurn(file, session, call);
            if (session.agent.empty() && project.recent.size() < 40) project.recent.push_back(call);
            file.writeIfLarge();
        }
    }

    Call nextCall(Session& session) {
        constexpr double last = 1789387200 - 1;
        session.seconds = std::min(session.seconds + 4 + 60 * random_.unit(), last);
        const std::int64_t written = skewed(random_, 900, 1.1);
        Call call{.messageId = identifier("msg_01", random_),
                  .requestId = identifier("req_011C", random_),
                  .model = models[random_.next() % models.size()],
                  .seconds = session.seconds,
                  .usage = {.input = random_.between(1, 30),
                            .cacheCreate5m = session.agent.empty() ? 0 : written,
                            .cacheCreate1h = session.agent.empty() ? written : 0,
                            .cacheRead = session.context},
                  .outputs = {}};
        session.context += written;
        if (session.context > 230'000) session.context = random_.between(12'000, 30'000);  // compacted
        std::int64_t lines = 1;
        while (lines < 14 && random_.chance(0.545))
            ++lines;
        std::int64_t outputTokens = random_.between(1, 12);
        for (std::int64_t line = 0; line < lines; ++line) {
            call.outputs.push_back(outputTokens);
            outputTokens += skewed(random_, 120, 1.2) + 1;
        }
        totals_.calls += 1;
        if (!session.agent.empty()) totals_.subagentCalls += 1;
        TokenUsage whole = call.usage;
        whole.output = call.outputs.back();
        totals_.tokens += whole;
        return call;
    }

    // Lines

    template <typename Append>
    void appendLine(LogOutput& file, Append&& append) {
        const std::size_t begin = file.text.size();
        append(file.text);
        totals_.longestLine = std::max(totals_.longestLine, static_cast<std::int64_t>(file.text.size() - begin));
        file.text += '\n';
        totals_.lines += 1;
    }

    void appendEnvelope(std::string& to, const Session& session) {
        fmt::format_to(std::back_inserter(to),
                       R"({{"parentUuid":"{}","isSidechain":{},"userType":"external","cwd":"{}","sessionId":"{}",)"
                       R"("version":"2.1.97","gitBranch":"main",)",
                       uuid(random_), !session.agent.empty(), session.cwd, session.id);
        if (!session.agent.empty()) fmt::format_to(std::back_inserter(to), R"("agentId":"{}",)", session.agent);
    }

    void appendEnd(std::string& to, double seconds) {
        fmt::format_to(std::back_inserter(to), R"("uuid":"{}","timestamp":"{}"}})", uuid(random_),
                       timestampText(seconds));
    }

    [[nodiscard]] std::int64_t textLength(double median, double spread) {
        return std::min(skewed(random_, median, spread), longestText_);
    }

    void appendTurn(LogOutput& file, const Session& session, const Call& call) {
        appendToolResult(file, session);
        for (std::int64_t count = random_.between(0, 4); count > 0; --count)
            appendProgress(file, session);
        if (random_.chance(0.12)) appendSystem(file, session);
        if (random_.chance(0.05)) appendFileHistory(file);
        if (random_.chance(0.01)) appendError(file, session);
        appendCall(file, session, call);
    }

    void appendUsage(std::string& to, const Call& call, std::int64_t outputTokens) {
        const std::size_t begin = to.size();
        const TokenUsage& usage = call.usage;
        fmt::format_to(std::back_inserter(to),
                       R"({{"input_tokens":{},"cache_creation_input_tokens":{},"cache_read_input_tokens":{},)"
                       R"("cache_creation":{{"ephemeral_5m_input_tokens":{},"ephemeral_1h_input_tokens":{}}},)"
                       R"("output_tokens":{},"server_tool_use":{{"web_search_requests":0,"web_fetch_requests":0}},)"
                       R"("service_tier":"standard","inference_geo":"","iterations":[],"speed":"standard"}})",
                       usage.input, usage.cacheCreate5m + usage.cacheCreate1h, usage.cacheRead, usage.cacheCreate5m,
                       usage.cacheCreate1h, outputTokens);
        totals_.usageBytes += static_cast<std::int64_t>(to.size() - begin);
    }

    void appendContent(std::string& to) {
        if (random_.chance(0.4)) {
            fmt::format_to(std::back_inserter(to),
                           R"({{"type":"tool_use","id":"{}","name":"Edit","input":{{"file_path":"/home/ana/shop/a.ts",)"
                           R"("new_string":")",
                           identifier("toolu_01", random_));
            appendText(to, output, textLength(500, 1.2), random_);
            to += R"("}})";
        } else {
            to += R"({"type":"text","text":")";
            appendText(to, prose, textLength(320, 1.0), random_);
            to += R"("})";
        }
    }

    void appendCall(LogOutput& file, const Session& session, const Call& call) {
        for (const std::int64_t outputTokens : call.outputs) {
            appendLine(file, [&](std::string& to) {
                appendEnvelope(to, session);
                if (!session.messageFirst) to += R"("type":"assistant",)";
                fmt::format_to(std::back_inserter(to),
                               R"("message":{{"model":"{}","id":"{}","type":"message","role":"assistant","content":[)",
                               call.model, call.messageId);
                appendContent(to);
                to += R"(],"stop_reason":null,"stop_sequence":null,"usage":)";
                appendUsage(to, call, outputTokens);
                fmt::format_to(std::back_inserter(to), R"(}},"requestId":"{}",)", call.requestId);
                if (session.messageFirst) to += R"("type":"assistant",)";
                appendEnd(to, call.seconds);
            });
            totals_.usageLines += 1;
        }
    }

    /// The text stands twice, once for the model and once for the screen.
    void appendToolResult(LogOutput& file, const Session& session) {
        const bool hasImage = longestText_ > 100'000 && random_.chance(0.003);
        if (hasImage) return appendImage(file, session, random_.between(60'000, 400'000));
        appendLine(file, [&](std::string& to) {
            appendEnvelope(to, session);
            fmt::format_to(std::back_inserter(to),
                           R"("type":"user","message":{{"role":"user","content":[{{"tool_use_id":"{}",)"
                           R"("type":"tool_result","content":")",
                           identifier("toolu_01", random_));
            const std::size_t begin = to.size();
            appendText(to, output, textLength(1900, 1.25), random_);
            const std::string text = to.substr(begin);
            to += R"("}]},"toolUseResult":{"stdout":")";
            to += text;
            to += R"(","stderr":"","interrupted":false,"isImage":false},)";
            appendEnd(to, session.seconds);
        });
    }

    void appendImage(LogOutput& file, const Session& session, std::int64_t bytes) {
        appendLine(file, [&](std::string& to) {
            appendEnvelope(to, session);
            to += R"("type":"user","message":{"role":"user","content":[{"type":"image","source":{"type":"base64",)"
                  R"("media_type":"image/png","data":")";
            appendBase64(to, bytes);
            to += R"("}}]},)";
            appendEnd(to, session.seconds);
        });
    }

    /// Progress of a subagent holds a message of its own, which is not a call of this log.
    void appendProgress(LogOutput& file, const Session& session) {
        appendLine(file, [&](std::string& to) {
            appendEnvelope(to, session);
            if (random_.chance(0.3)) {
                fmt::format_to(
                    std::back_inserter(to),
                    R"("type":"progress","data":{{"type":"agent_progress","message":{{"type":"assistant",)"
                    R"("message":{{"model":"claude-haiku-4-5","id":"{}","content":[{{"type":"text","text":")",
                    identifier("msg_01", random_));
                appendText(to, prose, textLength(900, 1.0), random_);
                to += R"("}],"usage":{"input_tokens":3,"output_tokens":9}}}},)";
            } else {
                to += R"("type":"progress","data":{"type":"bash_progress","output":")";
                appendText(to, output, textLength(700, 1.1), random_);
                to += R"(","elapsedTimeSeconds":4},)";
            }
            fmt::format_to(std::back_inserter(to), R"("toolUseID":"{}",)", identifier("toolu_01", random_));
            appendEnd(to, session.seconds);
        });
    }

    void appendSystem(LogOutput& file, const Session& session) {
        appendLine(file, [&](std::string& to) {
            appendEnvelope(to, session);
            to += R"("type":"system","subtype":"turn_duration","level":"info","content":")";
            appendText(to, prose, textLength(150, 0.8), random_);
            to += R"(",)";
            appendEnd(to, session.seconds);
        });
    }

    void appendSummary(LogOutput& file, const Session&) {
        appendLine(file, [&](std::string& to) {
            to += R"({"type":"summary","summary":")";
            appendText(to, prose, 50, random_);
            fmt::format_to(std::back_inserter(to), R"(","leafUuid":"{}"}})", uuid(random_));
        });
    }

    void appendFileHistory(LogOutput& file) {
        appendLine(file, [&](std::string& to) {
            fmt::format_to(std::back_inserter(to),
                           R"({{"type":"file-history-snapshot","messageId":"{}","snapshot":{{"trackedFileBackups":{{)",
                           uuid(random_));
            const std::int64_t count = std::min<std::int64_t>(random_.between(1, 30), longestText_ / 100);
            for (std::int64_t index = 0; index < count; ++index) {
                fmt::format_to(std::back_inserter(to),
                               R"({}"src/part{}/index.ts":{{"backupFileName":"{:016x}@v1","version":{}}})",
                               index == 0 ? "" : ",", index, random_.next(), index + 1);
            }
            to += R"(}},"isSnapshotUpdate":false})";
        });
    }

    void appendError(LogOutput& file, const Session& session) {
        appendLine(file, [&](std::string& to) {
            appendEnvelope(to, session);
            fmt::format_to(std::back_inserter(to),
                           R"("type":"assistant","isApiErrorMessage":true,"message":{{"id":"{}","model":"<synthetic>",)"
                           R"("role":"assistant","content":[{{"type":"text","text":"API Error: 529"}}],)"
                           R"("usage":{{"input_tokens":0,"output_tokens":0}}}},)",
                           uuid(random_));
            appendEnd(to, session.seconds);
        });
    }

    const std::string& folder_;
    const ClaudeHistory::Parameters& parameters_;
    Random random_;
    std::vector<Project> projects_;
    std::int64_t longestText_ = 0;
    Totals totals_;
};

}  // namespace

std::string ClaudeHistory::Parameters::name() const {
    const auto whole = [this](std::string_view word) {
        return fmt::format("{}-{}-bytes-{}-files-seed-{}-v{}", word, bytes, files, seed, revision);
    };
    switch (shape) {
        case Shape::Typical: return whole("history");
        case Shape::OneLargeFile: return whole(fmt::format("large-file-lines-of-{}", longLine));
        case Shape::EqualFiles: return whole("equal-files");
    }
    return {};
}

Totals ClaudeHistory::write(const std::string& folder, const Parameters& parameters) {
    std::filesystem::create_directories(folder);
    return HistoryWriter{folder, parameters}.write();
}

std::string ClaudeHistory::freshLine(std::int64_t number) {
    return fmt::format(
        R"({{"parentUuid":null,"isSidechain":false,"cwd":"/home/ana/shop","sessionId":"s","type":"assistant",)"
        R"("message":{{"id":"msg_fresh_{0}","model":"claude-opus-4-8","content":[],"usage":{{"input_tokens":4,)"
        R"("cache_read_input_tokens":41822,"output_tokens":7}}}},"requestId":"req_fresh_{0}",)"
        R"("timestamp":"2026-09-14T08:21:07.114Z"}})"
        "\n",
        number);
}

}  // namespace quorvane::benchmarks
