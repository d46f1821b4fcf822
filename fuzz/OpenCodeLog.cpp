// OpenCode's log lines: the field parser gives what the plain rules give, byte by byte; and whatever a line holds, one
// of the two readers tells of its call, or neither, and the log's quick look at a line never drops one that tells.

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/platform/NumberText.h"
#include "QuorvaneCore/platform/UTF8.h"
#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "QuorvaneCore/providers/OpenCodeProvider.h"
#include "QuorvaneCore/providers/detail/OpenCodeLogFields.h"
#include "fuzz/FuzzTarget.h"

using quorvane::MuseSparkProvider;
using quorvane::OpenCodeProvider;
using quorvane::ProviderID;
using quorvane::TokenUsage;
using quorvane::UsageEvent;
using quorvane::fuzz::require;
using Fields = OpenCodeProvider::Fields;

namespace {

constexpr std::size_t largestLine = 65536;

/// The rules as a machine that takes one byte after the other.
class FieldMachine {
public:
    void take(char byte) {
        switch (state_) {
            case State::Word:
                if (byte == '=') {
                    state_ = State::Sign;
                } else if (byte == ' ') {
                    key_.clear();
                } else {
                    key_ += byte;
                }
                return;
            case State::Sign:
                if (byte == '"') {
                    state_ = State::Quoted;
                    return;
                }
                state_ = State::Plain;
                take(byte);
                return;
            case State::Plain:
                if (byte == ' ') {
                    store();
                } else {
                    value_ += byte;
                }
                return;
            case State::Quoted:
                if (byte == '"') {
                    store();
                } else if (byte == '\\') {
                    state_ = State::Escaped;
                } else {
                    value_ += byte;
                }
                return;
            case State::Escaped:
                value_ += byte;
                state_ = State::Quoted;
                return;
        }
    }

    Fields finish() {
        if (state_ != State::Word) store();
        return fields_;
    }

private:
    enum class State : std::uint8_t { Word, Sign, Plain, Quoted, Escaped };

    void store() {
        fields_[quorvane::repairedUTF8(key_)] = quorvane::repairedUTF8(value_);
        key_.clear();
        value_.clear();
        state_ = State::Word;
    }

    State state_ = State::Word;
    std::string key_;
    std::string value_;
    Fields fields_;
};

/// Absent if a figure, or the sum of two, is one that 64 bits cannot hold, which ends the process by design.
std::optional<TokenUsage> figures(const Fields& fields) {
    constexpr double safe = 1e18;  // five of them are below 2^63
    bool fits = true;
    const auto figure = [&](const char* key) -> std::int64_t {
        const auto found = fields.find(key);
        const std::optional<double> number = found == fields.end() ? std::nullopt : quorvane::parseFloat(found->second);
        if (!number) return 0;
        fits = fits && std::abs(*number) < safe;
        return fits ? static_cast<std::int64_t>(*number) : 0;
    };
    TokenUsage usage;
    usage.input = figure("tokens.input");
    usage.output = figure("tokens.output");
    usage.output += figure("tokens.reasoning");
    usage.cacheCreate5m = figure("tokens.cache.write");
    usage.cacheRead = figure("tokens.cache.read");
    return fits ? std::optional{usage} : std::nullopt;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > largestLine) return 0;
    const std::string_view line{reinterpret_cast<const char*>(data), size};
    FieldMachine machine;
    for (const char byte : line)
        machine.take(byte);
    const Fields fields = OpenCodeProvider::parseFields(line);
    require(fields == machine.finish(), "the fields of the line");

    const std::optional<TokenUsage> usage = figures(fields);
    if (!usage) return 0;
    const std::optional<UsageEvent> opencode = OpenCodeProvider::decode(fields);
    const std::optional<UsageEvent> museSpark = MuseSparkProvider::decode(fields);
    require(!opencode || !museSpark, "no call is told twice");
    const bool hasSession = fields.contains("id") || fields.contains("session.id");
    if (!opencode && !museSpark) return 0;
    const UsageEvent& event = opencode ? *opencode : *museSpark;
    require(event.usage == *usage && event.usage.total() > 0, "the figures of the call");
    require(hasSession && !event.model.empty(), "a call has a session and a model");
    require(event.provider == (opencode ? ProviderID::Opencode : ProviderID::MuseSpark), "provider");
    require(quorvane::detail::mayTellOfTokens(line), "the quick look lets the line through");
    return 0;
}
