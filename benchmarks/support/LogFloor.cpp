#include "benchmarks/support/LogFloor.h"

#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <simdjson.h>
#include <unistd.h>

namespace quorvane::benchmarks {
namespace {

constexpr std::size_t chunkBytes = 65536;

/// Calls `onLine` for each line of a file that ends in a line feed. `buffer` is kept between files.
template <typename OnLine>
void forEachLine(const std::string& file, std::vector<char>& buffer, OnLine&& onLine) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw std::runtime_error{"cannot open " + file};
    std::size_t end = 0;
    for (;;) {
        if (buffer.size() < end + chunkBytes + simdjson::SIMDJSON_PADDING) {
            buffer.resize(2 * (end + chunkBytes) + simdjson::SIMDJSON_PADDING);
        }
        const ssize_t count = ::read(descriptor, buffer.data() + end, chunkBytes);
        if (count <= 0) break;
        std::size_t search = end;
        end += static_cast<std::size_t>(count);
        std::size_t begin = 0;
        while (const void* feed = std::memchr(buffer.data() + search, '\n', end - search)) {
            search = static_cast<std::size_t>(static_cast<const char*>(feed) - buffer.data());
            onLine(std::string_view{buffer.data() + begin, search - begin});
            begin = ++search;
        }
        if (begin > 0) std::memmove(buffer.data(), buffer.data() + begin, end - begin);
        end -= begin;
    }
    ::close(descriptor);
}

bool isClaudeCall(const simdjson::dom::element& document) {
    std::string_view type;
    simdjson::dom::object usage;
    return document["type"].get(type) == simdjson::SUCCESS && type == "assistant" &&
           document["message"]["usage"].get(usage) == simdjson::SUCCESS &&
           document["requestId"].error() == simdjson::SUCCESS;
}

bool isCodexUsage(const simdjson::dom::element& document) {
    std::string_view type;
    std::string_view event;
    if (document["type"].get(type) != simdjson::SUCCESS) return false;
    if (type == "session_meta" || type == "turn_context") return true;
    return type == "event_msg" && document["payload"]["type"].get(event) == simdjson::SUCCESS && event == "token_count";
}

bool doesMatter(LogFloor::Agent agent, const simdjson::dom::element& document) {
    switch (agent) {
        case LogFloor::Agent::Claude: return isClaudeCall(document);
        case LogFloor::Agent::Codex: return isCodexUsage(document);
        case LogFloor::Agent::Copilot: return true;
    }
    return false;
}

}  // namespace

struct LogFloor::Parser {
    simdjson::dom::parser parser;
    std::vector<char> buffer;

    /// Parses in place; the buffer has room behind each line.
    simdjson::simdjson_result<simdjson::dom::element> parse(std::string_view line) {
        constexpr bool copyFirst = false;
        return parser.parse(line.data(), line.size(), copyFirst);
    }
};

LogFloor::LogFloor(std::vector<std::string> files, Agent agent)
    : files_{std::move(files)}, parser_{std::make_unique<Parser>()} {
    for (const std::string& file : files_) {
        forEachLine(file, parser_->buffer, [&](std::string_view line) {
            const simdjson::dom::element document = parser_->parse(line);
            const bool matters = doesMatter(agent, document);
            carriesUsage_.push_back(matters);
            usageLines_ += matters ? 1 : 0;
        });
    }
}

LogFloor::~LogFloor() = default;

std::int64_t LogFloor::run() {
    std::size_t line = 0;
    std::int64_t parsed = 0;
    for (const std::string& file : files_) {
        forEachLine(file, parser_->buffer, [&](std::string_view text) {
            if (!carriesUsage_[line++]) return;
            const simdjson::dom::element document = parser_->parse(text);
            ::benchmark::DoNotOptimize(document);
            ++parsed;
        });
    }
    return parsed;
}

}  // namespace quorvane::benchmarks
