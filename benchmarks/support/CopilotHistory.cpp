#include "benchmarks/support/CopilotHistory.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include <fmt/format.h>

#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/LogText.h"
#include "benchmarks/support/Random.h"

namespace quorvane::benchmarks {
namespace {

using Totals = CopilotHistory::Totals;

/// One turn of the agent after the other.
class TelemetryWriter {
public:
    TelemetryWriter(const std::string& file, std::uint64_t seed) : random_{seed}, output_{file} {}

    Totals write(std::int64_t bytes) {
        while (output_.size() < bytes) {
            if (random_.chance(0.1)) conversation_ = uuid(random_);
            writeTurn();
            output_.writeIfLarge();
        }
        output_.write();
        totals_.bytes = output_.size();
        return totals_;
    }

private:
    void writeTurn() {
        constexpr std::array<std::string_view, 3> models{"claude-sonnet-4.6", "gpt-5.4", "gpt-5-mini"};
        const std::string_view model = models.at(static_cast<std::size_t>(random_.below(3)));
        trace_ = fmt::format("{:016x}{:016x}", random_.next(), random_.next());
        agent_ = spanId();
        TokenUsage sum;
        for (std::int64_t call = random_.between(1, 8); call > 0; --call) {
            writeCall(model, sum);
            if (call > 1) writeTool();
        }
        writeSpan(agent_, "", "invoke_agent copilot", "invoke_agent",
                  fmt::format(R"("gen_ai.conversation.id":"{}","gen_ai.request.model":"{}",)"
                              R"("gen_ai.usage.input_tokens":{},"gen_ai.usage.output_tokens":{})",
                              conversation_, model, sum.input, sum.output));
        time_ += static_cast<double>(random_.between(10, 600));
    }

    void writeCall(std::string_view model, TokenUsage& sum) {
        const std::int64_t cached = random_.between(0, 90'000);
        const std::int64_t input = cached + random_.between(20, 9'000);
        const std::int64_t created = random_.chance(0.5) ? random_.between(1, 4'000) : 0;
        const std::int64_t output = random_.between(5, 3'000);
        const std::int64_t reasoning = random_.chance(0.3) ? random_.between(64, 2'000) : 0;
        const std::int64_t nano = random_.between(1'000'000, 90'000'000);
        const std::string response = fmt::format("resp_{:016x}{:016x}", random_.next(), random_.next());
        const std::string span = spanId();
        const std::string attributes = fmt::format(
            R"("gen_ai.provider.name":"github","gen_ai.request.model":"{}","gen_ai.response.model":"{}",)"
            R"("gen_ai.conversation.id":"{}","gen_ai.response.id":"{}","gen_ai.response.finish_reasons":["stop"],)"
            R"("gen_ai.usage.input_tokens":{},"gen_ai.usage.output_tokens":{},)"
            R"("gen_ai.usage.cache_read.input_tokens":{},"gen_ai.usage.cache_creation.input_tokens":{},)"
            R"("gen_ai.usage.reasoning.output_tokens":{},"github.copilot.nano_aiu":{})",
            model, model, conversation_, response, input, output, cached, created, reasoning, nano);
        writeSpan(span, agent_, fmt::format("chat {}", model), "chat", attributes);
        if (random_.chance(0.3)) {
            output_.text += fmt::format(
                R"({{"type":"log","traceId":"{}","spanId":"{}","timestamp":{:.0f},"body":"GenAI inference: {}",)"
                R"("attributes":{{"event.name":"gen_ai.client.inference.operation.details",{}}}}})"
                "\n",
                trace_, span, time_ * 1000, model, attributes);
            ++totals_.lines;
        }
        ++totals_.calls;
        totals_.aiuNano += nano;
        totals_.tokens += TokenUsage{.input = input - cached,
                                     .output = output + reasoning,
                                     .cacheCreate5m = created,
                                     .cacheCreate1h = 0,
                                     .cacheRead = cached};
        sum.input += input;
        sum.output += output;
    }

    void writeTool() {
        writeSpan(spanId(), agent_, "execute_tool bash", "execute_tool",
                  fmt::format(R"("gen_ai.tool.name":"bash","gen_ai.tool.call.id":"call_{:016x}",)"
                              R"("gen_ai.tool.type":"function","github.copilot.exit_code":0)",
                              random_.next()));
    }

    void writeSpan(std::string_view span, std::string_view parent, std::string_view name, std::string_view operation,
                   std::string_view attributes) {
        const double begin = time_;
        time_ += static_cast<double>(random_.between(200, 20'000)) / 1000;
        output_.text += fmt::format(
            R"({{"type":"span","traceId":"{}","spanId":"{}","parentSpanId":"{}","name":"{}","kind":2,)"
            R"("startTime":{},"endTime":{},"status":{{"code":0}},"resource":{{"service.name":"github-copilot",)"
            R"("service.version":"1.0.9"}},"attributes":{{"gen_ai.operation.name":"{}",{}}}}})"
            "\n",
            trace_, span, parent, name, pair(begin), pair(time_), operation, attributes);
        ++totals_.lines;
    }

    static std::string pair(double time) {
        const auto seconds = static_cast<std::int64_t>(time);
        return fmt::format("[{},{}]", seconds, static_cast<std::int64_t>((time - static_cast<double>(seconds)) * 1e9));
    }

    std::string spanId() { return fmt::format("{:016x}", random_.next()); }

    Random random_;
    LogOutput output_;
    Totals totals_;
    double time_ = 1'700'000'000;
    std::string conversation_ = uuid(random_);
    std::string trace_;
    std::string agent_;
};

}  // namespace

Totals CopilotHistory::write(const std::string& file, std::int64_t bytes, std::uint64_t seed) {
    return TelemetryWriter{file, seed}.write(bytes);
}

const CopilotHistory::OnDisk& CopilotHistory::typical() {
    static const ScratchFolder scratch;
    static const OnDisk history = [] {
        std::string file = scratch.path("otel.jsonl");
        const Totals totals = write(file, BenchmarkData::scaled(200'000'000), 1);
        return OnDisk{.folder = scratch.path(), .file = std::move(file), .totals = totals};
    }();
    return history;
}

}  // namespace quorvane::benchmarks
