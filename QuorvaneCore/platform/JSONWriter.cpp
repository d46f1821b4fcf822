#include "QuorvaneCore/platform/JSONWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

namespace quorvane {
namespace {

/// Writes values one after the other into `text`. The JSON library's own writer is asked for strings only: its floats
/// are not always the shortest ones.
class Writer {
public:
    /// `indentation` is the number of blanks a level; without one, everything goes on one line.
    explicit Writer(std::optional<std::size_t> indentation) : indentation_{indentation} {}

    void write(const JSONTree& tree) {
        std::visit([this](const auto& content) { writeContent(content); }, tree.content);
    }

    std::string text;

private:
    void writeContent(std::nullptr_t) { text += "null"; }
    void writeContent(bool value) { text += value ? "true" : "false"; }
    void writeContent(std::int64_t value) { writeDigits(value); }
    void writeContent(std::uint64_t value) { writeDigits(value); }

    void writeContent(double value) {
        constexpr double exactIntegers = 9007199254740992.0;  // 2^53
        if (!std::isfinite(value)) {
            text += "null";
        } else if (std::trunc(value) == value && std::fabs(value) <= exactIntegers) {
            writeDigits(static_cast<std::int64_t>(value));
        } else {
            writeDigits(value);
        }
    }

    void writeContent(const std::string& value) {
        text += nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

    void writeContent(const JSONTree::Array& elements) {
        writeContainer('[', ']', elements, [this](const JSONTree& element) { write(element); });
    }

    void writeContent(const JSONTree::Object& members) {
        writeContainer('{', '}', members, [this](const auto& member) {
            writeContent(member.first);
            text += indentation_ ? ": " : ":";
            write(member.second);
        });
    }

    /// Integers whole; floats in the shortest form that reads back.
    template <typename Number>
    void writeDigits(Number value) {
        std::array<char, 64> digits{};
        const std::to_chars_result end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
        text.append(digits.data(), end.ptr);
    }

    template <typename Container, typename WriteItem>
    void writeContainer(char open, char close, const Container& items, WriteItem writeItem) {
        text += open;
        ++depth_;
        bool isFirst = true;
        for (const auto& item : items) {
            if (!isFirst) text += ',';
            isFirst = false;
            startLine();
            writeItem(item);
        }
        --depth_;
        if (!items.empty()) startLine();
        text += close;
    }

    void startLine() {
        if (indentation_) text.append("\n").append(depth_ * *indentation_, ' ');
    }

    std::optional<std::size_t> indentation_;
    std::size_t depth_ = 0;
};

std::string written(const JSONTree& tree, std::optional<std::size_t> indentation) {
    Writer writer{indentation};
    writer.write(tree);
    return std::move(writer.text);
}

}  // namespace

std::string JSONWriter::pretty(const JSONTree& tree) {
    constexpr std::size_t blanksALevel = 2;
    return written(tree, blanksALevel);
}

std::string JSONWriter::compact(const JSONTree& tree) {
    return written(tree, std::nullopt);
}

}  // namespace quorvane
