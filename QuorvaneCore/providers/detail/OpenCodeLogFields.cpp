#include "QuorvaneCore/providers/detail/OpenCodeLogFields.h"

#include <algorithm>
#include <utility>

#include "QuorvaneCore/model/ISOTimestamp.h"
#include "QuorvaneCore/platform/ByteSearch.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/NumberText.h"
#include "QuorvaneCore/platform/UTF8.h"

namespace quorvane::detail {
namespace {

constexpr char blank = ' ';
constexpr char quote = '"';
constexpr char backslash = '\\';

/// A walk over the bytes of one line. Only the byte 32 is a blank.
class Walk {
public:
    explicit Walk(std::string_view line) noexcept : line_{line} {}

    [[nodiscard]] bool isAtEnd() const noexcept { return at_ == line_.size(); }

    void skipBlanks() noexcept { at_ = std::min(line_.find_first_not_of(blank, at_), line_.size()); }

    /// The key before "=", which is passed too. Absent for a word without one, which is passed up to its blank.
    std::optional<std::string_view> key() noexcept {
        const std::size_t begin = at_;
        at_ = std::min(line_.find_first_of("= ", begin), line_.size());
        if (isAtEnd() || line_[at_] == blank) return std::nullopt;
        return line_.substr(begin, at_++ - begin);
    }

    std::string value() {
        if (isAtEnd()) return {};
        return line_[at_] == quote ? quotedValue() : plainValue();
    }

private:
    std::string plainValue() {
        const std::size_t begin = at_;
        at_ = std::min(line_.find(blank, begin), line_.size());
        return std::string{line_.substr(begin, at_ - begin)};
    }

    std::string quotedValue() {
        std::string value;
        for (++at_; !isAtEnd(); ++at_) {
            if (line_[at_] == quote) {
                ++at_;
                break;
            }
            // A backslash at the very end has nothing to take along.
            if (line_[at_] == backslash && ++at_ == line_.size()) break;
            value += line_[at_];
        }
        return value;
    }

    std::string_view line_;
    std::size_t at_ = 0;
};

std::optional<std::string_view> field(const OpenCodeLogFields& fields, std::string_view key) noexcept {
    const auto found = fields.find(key);
    if (found == fields.end()) return std::nullopt;
    return found->second;
}

/// The agent is a JavaScript program: a value that it does not have comes out as one of these texts.
std::optional<std::string_view> usable(const OpenCodeLogFields& fields, std::string_view key) noexcept {
    const std::optional<std::string_view> value = field(fields, key);
    return value == "undefined" || value == "\"\"" ? std::nullopt : value;
}

std::int64_t figure(const OpenCodeLogFields& fields, std::string_view key) {
    const std::optional<std::string_view> text = field(fields, key);
    const std::optional<double> number = text ? parseFloat(*text) : std::nullopt;
    return number ? checkedInt64(*number) : 0;
}

}  // namespace

OpenCodeLogFields parseOpenCodeLogFields(std::string_view line) {
    OpenCodeLogFields fields;
    for (Walk walk{line}; !walk.isAtEnd();) {
        walk.skipBlanks();
        if (const std::optional<std::string_view> key = walk.key()) {
            fields.insert_or_assign(repairedUTF8(*key), repairedUTF8(walk.value()));
        }
    }
    return fields;
}

bool mayTellOfTokens(std::string_view line) noexcept {
    return findBytes(line, "tokens.") != std::string_view::npos;
}

std::string_view openCodeLogModel(const OpenCodeLogFields& fields) noexcept {
    if (const auto model = usable(fields, "model")) return *model;
    return usable(fields, "modelID").value_or(std::string_view{});
}

std::optional<UsageEvent> openCodeLogCall(const OpenCodeLogFields& fields) {
    std::optional<std::string_view> session = usable(fields, "id");
    if (!session) session = usable(fields, "session.id");
    if (!session) return std::nullopt;

    UsageEvent event;
    event.usage = {.input = figure(fields, "tokens.input"),
                   .output = checkedAdd(figure(fields, "tokens.output"), figure(fields, "tokens.reasoning")),
                   .cacheCreate5m = figure(fields, "tokens.cache.write"),
                   .cacheRead = figure(fields, "tokens.cache.read")};
    if (event.usage.total() <= 0) return std::nullopt;
    event.messageId = *session;
    event.requestId = usable(fields, "run").value_or("opencode-log");
    event.timestamp = ISOTimestamp::parse(usable(fields, "timestamp"), Date::distantPast());
    if (const auto folder = usable(fields, "directory")) event.project = FilePath::lastComponent(*folder);
    return event;
}

}  // namespace quorvane::detail
