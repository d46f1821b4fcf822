#include "QuorvaneCore/platform/JSONTopLevelScan.h"

#include <cstddef>
#include <cstring>

namespace quorvane {
namespace {

/// Walks the members of one object. Positions beyond the end mean that the text is odd.
class Scan {
public:
    explicit Scan(std::string_view text) noexcept : text_{text} {}

    [[nodiscard]] bool atEnd() const noexcept { return at_ >= text_.size(); }
    [[nodiscard]] char current() const noexcept { return atEnd() ? '\0' : text_[at_]; }

    void skipWhiteSpace() noexcept {
        while (!atEnd() && (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '\r' || text_[at_] == '\n'))
            ++at_;
    }

    /// Takes `expected`, with white space around it.
    bool take(char expected) noexcept {
        skipWhiteSpace();
        if (current() != expected) return false;
        ++at_;
        skipWhiteSpace();
        return true;
    }

    /// Takes a string and gives the bytes between its quotes; absent if there is none or it does not end.
    std::optional<std::string_view> takeString() noexcept {
        if (current() != '"') return std::nullopt;
        const std::size_t begin = at_ + 1;
        std::size_t search = begin;
        while (search < text_.size()) {
            const void* found = std::memchr(text_.data() + search, '"', text_.size() - search);
            if (found == nullptr) break;
            const auto quote = static_cast<std::size_t>(static_cast<const char*>(found) - text_.data());
            if (!isEscaped(quote, begin)) {
                at_ = quote + 1;
                return text_.substr(begin, quote - begin);
            }
            search = quote + 1;
        }
        return std::nullopt;
    }

    /// Skips a value of any kind; false if it does not end, or if it is a container with more than a few kilobytes.
    bool skipValue() noexcept {
        if (current() == '"') return takeString().has_value();
        if (current() == '{' || current() == '[') return skipContainer();
        while (!atEnd() && current() != ',' && current() != '}')
            ++at_;
        return !atEnd();
    }

private:
    [[nodiscard]] bool isEscaped(std::size_t quote, std::size_t begin) const noexcept {
        std::size_t backslashes = 0;
        while (quote > begin + backslashes && text_[quote - backslashes - 1] == '\\')
            ++backslashes;
        return backslashes % 2 == 1;
    }

    bool skipContainer() noexcept {
        constexpr std::size_t budget = 4096;
        const std::size_t limit = at_ + budget;
        std::size_t depth = 0;
        while (!atEnd() && at_ < limit) {
            const char character = current();
            if (character == '"') {
                if (!takeString()) return false;
                continue;
            }
            ++at_;
            if (character == '{' || character == '[') ++depth;
            if ((character == '}' || character == ']') && --depth == 0) return true;
        }
        return false;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace

std::optional<std::string_view> scanTopLevelString(std::string_view text, std::string_view key) noexcept {
    Scan scan{text};
    if (!scan.take('{')) return std::nullopt;
    while (scan.current() != '}') {
        const std::optional<std::string_view> member = scan.takeString();
        if (!member || member->find('\\') != std::string_view::npos || !scan.take(':')) return std::nullopt;
        if (*member == key) {
            if (scan.current() != '"') return std::string_view{};
            const std::optional<std::string_view> value = scan.takeString();
            const bool isPlain = value && value->find('\\') == std::string_view::npos;
            return isPlain ? value : std::nullopt;
        }
        if (!scan.skipValue()) return std::nullopt;
        scan.skipWhiteSpace();
        if (scan.current() == '}') break;
        if (!scan.take(',')) return std::nullopt;
    }
    return std::string_view{};
}

}  // namespace quorvane
