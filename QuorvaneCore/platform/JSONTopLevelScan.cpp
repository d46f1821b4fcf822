#include "QuorvaneCore/platform/JSONTopLevelScan.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvane {
namespace {

/// Walks the members of one object. Positions beyond the end mean that the text is odd.
class Scan {
public:
    Scan(std::string_view text, std::size_t begin) noexcept : text_{text}, at_{begin} {}

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

    /// Skips a value of any kind and the comma behind it; false if it does not end, or if it is a container that is not
    /// a short one: walking through those costs more than the caller's parse.
    bool passValue() noexcept {
        if (!skipValue()) return false;
        skipWhiteSpace();
        return current() == '}' || take(',');
    }

    /// The answer to the question, at the value of the member that was asked for.
    std::optional<std::string_view> wantedValue() noexcept {
        skipWhiteSpace();
        if (current() != '"') return std::string_view{};
        const std::optional<std::string_view> value = takeString();
        const bool isPlain = value && value->find('\\') == std::string_view::npos;
        return isPlain ? value : std::nullopt;
    }

private:
    [[nodiscard]] bool isEscaped(std::size_t quote, std::size_t begin) const noexcept {
        std::size_t backslashes = 0;
        while (quote > begin + backslashes && text_[quote - backslashes - 1] == '\\')
            ++backslashes;
        return backslashes % 2 == 1;
    }

    bool skipValue() noexcept {
        if (current() == '"') return takeString().has_value();
        if (current() == '{' || current() == '[') return skipContainer();
        while (!atEnd() && current() != ',' && current() != '}')
            ++at_;
        return !atEnd();
    }

    bool skipContainer() noexcept {
        constexpr std::size_t budget = 64;
        const std::size_t limit = at_ + budget;
        const std::string_view shortest = text_.substr(at_, budget);
        if (shortest.find(current() == '{' ? '}' : ']') == std::string_view::npos) return false;  // the common case
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

/// The quick look: in a log line the key mostly stands behind short members without escapes and containers. Up to the
/// first brace, bracket or backslash all quotes are those of members, so a quoted `key` with a colon behind it is one.
class QuickLook {
public:
    QuickLook(std::string_view text, std::string_view key) noexcept : text_{text}, key_{key} {}

    enum class Found : std::uint8_t {
        Nothing,    ///< it takes a closer look from the beginning
        KeyValue,   ///< the value of the first member `key`
        Container,  ///< the first value that is an object or array; `key` is not among the members before it
    };
    struct Place {
        Found found = Found::Nothing;
        std::size_t at = 0;
    };

    [[nodiscard]] Place find() const noexcept {
        if (key_.size() < leastKey || !text_.starts_with('{')) return {};
        std::size_t at = 1;
        while (at + blockBytes + leastKey <= text_.size()) {
            const std::size_t stop = firstStop(text_.data() + at);
            at += stop;
            if (stop == blockBytes) continue;
            if (isOdd(text_[at])) return isContainerOfMember(at) ? Place{Found::Container, at} : Place{};
            if (text_.substr(at + 1).starts_with(key_)) return behindKey(at + 1 + key_.size());
            ++at;
        }
        return {};
    }

private:
    static constexpr std::size_t blockBytes = 32;
    static constexpr std::size_t leastKey = 2;

    static bool isOdd(char character) noexcept { return character == '{' || character == '[' || character == '\\'; }

    /// Sixteen bytes at once, which the compilers know how to compare on every processor.
    using Bytes = unsigned char __attribute__((vector_size(16)));

    static Bytes load(const char* from) noexcept {
        Bytes bytes{};
        std::memcpy(&bytes, from, sizeof bytes);
        return bytes;
    }

    /// Which of sixteen bytes are odd or begin a string that may be the key.
    [[nodiscard]] auto stops(const char* from) const noexcept {
        const Bytes bytes = load(from);
        const Bytes ahead = load(from + leastKey);
        const Bytes second = Bytes{} + static_cast<unsigned char>(key_[1]);
        return (bytes == '{') | (bytes == '[') | (bytes == '\\') | ((bytes == '"') & (ahead == second));
    }

    /// How many bytes of a block can be passed over; `blockBytes` if all of them.
    [[nodiscard]] std::size_t firstStop(const char* block) const noexcept {
        static_assert(blockBytes == 2 * sizeof(Bytes));
        const auto low = stops(block);
        const auto high = stops(block + sizeof(Bytes));
        if (firstSet(low | high) == sizeof(Bytes)) return blockBytes;
        const std::size_t inLow = firstSet(low);
        return inLow < sizeof(Bytes) ? inLow : sizeof(Bytes) + firstSet(high);
    }

    /// The place of the first byte that is not 0; 16 if there is none.
    template <typename Mask>
    static std::size_t firstSet(const Mask& mask) noexcept {
        std::array<std::uint64_t, 2> words{};
        std::memcpy(words.data(), &mask, sizeof mask);
        const auto zerosInFront = [](std::uint64_t word) noexcept {
            return std::endian::native == std::endian::little ? std::countr_zero(word) : std::countl_zero(word);
        };
        const int zeros = words[0] != 0 ? zerosInFront(words[0]) : 64 + zerosInFront(words[1]);
        return static_cast<std::size_t>(zeros) / 8;
    }

    /// A quote that ends a string has no punctuation or blank in front; one that begins a string has nothing else.
    [[nodiscard]] bool isContainerOfMember(std::size_t at) const noexcept {
        constexpr std::string_view beforeString = ",:{[ \t\r\n";
        return text_[at] != '\\' && at >= 3 && text_[at - 1] == ':' && text_[at - 2] == '"' &&
               beforeString.find(text_[at - 3]) == std::string_view::npos;
    }

    [[nodiscard]] Place behindKey(std::size_t at) const noexcept {
        return text_.substr(at).starts_with("\":") ? Place{Found::KeyValue, at + 2} : Place{};
    }

    std::string_view text_;
    std::string_view key_;
};

std::optional<std::string_view> answerFromMember(Scan& scan, std::string_view key) noexcept {
    while (scan.current() != '}') {
        const std::optional<std::string_view> member = scan.takeString();
        if (!member || member->find('\\') != std::string_view::npos || !scan.take(':')) return std::nullopt;
        if (*member == key) return scan.wantedValue();
        if (!scan.passValue()) return std::nullopt;
    }
    return std::string_view{};
}

}  // namespace

std::optional<std::string_view> scanTopLevelString(std::string_view text, std::string_view key) noexcept {
    const QuickLook::Place place = QuickLook{text, key}.find();
    Scan scan{text, place.at};
    switch (place.found) {
        case QuickLook::Found::KeyValue: return scan.wantedValue();
        case QuickLook::Found::Container: return scan.passValue() ? answerFromMember(scan, key) : std::nullopt;
        case QuickLook::Found::Nothing: return scan.take('{') ? answerFromMember(scan, key) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace quorvane
