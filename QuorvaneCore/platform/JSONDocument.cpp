#include "QuorvaneCore/platform/JSONDocument.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <utility>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"

namespace quorvane {
namespace {

constexpr std::string_view blanks = " \t\n\r";

/// The text that a string's own text, with quotes and escapes, stands for.
std::string unescaped(std::string_view text) {
    assert(text.size() >= 2 && text.front() == '"' && text.back() == '"');
    if (text.find('\\') == std::string_view::npos) return std::string{text.substr(1, text.size() - 2)};
    JSONParser parser;
    return std::string{parser.parse(text).string().value_or(std::string_view{})};
}

}  // namespace

JSONDocument::JSONDocument(std::string text) : content_{std::move(text)} {}
JSONDocument::JSONDocument(Array elements) : content_{std::move(elements)} {}
JSONDocument::JSONDocument(Object members) : content_{std::move(members)} {}

/// Takes a text apart that is known to be JSON, and of a depth that the stack can bear.
class JSONDocument::Reader {
public:
    explicit Reader(std::string_view text) : rest_{text} {}

    JSONDocument value() {
        skipBlanks();
        if (take('{')) return JSONDocument{members()};
        if (take('[')) return JSONDocument{elements()};
        return JSONDocument{rest_.front() == '"' ? stringText() : bareText()};
    }

private:
    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size())); }

    bool take(char character) {
        if (!rest_.starts_with(character)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    std::string cut(std::size_t size) {
        std::string text{rest_.substr(0, size)};
        rest_.remove_prefix(text.size());
        return text;
    }

    std::string stringText() {
        std::size_t end = 1;
        while (rest_[end] != '"')
            end += rest_[end] == '\\' ? 2 : 1;
        return cut(end + 1);
    }

    /// Of a number, true, false or null.
    std::string bareText() { return cut(rest_.find_first_of(",]} \t\n\r")); }

    Array elements() {
        Array found;
        skipBlanks();
        if (take(']')) return found;
        do {
            found.push_back(value());
            skipBlanks();
        } while (take(','));
        take(']');
        return found;
    }

    Object members() {
        Object found;
        skipBlanks();
        if (take('}')) return found;
        do {
            skipBlanks();
            std::string keyText = stringText();
            skipBlanks();
            take(':');
            std::string key = unescaped(keyText);
            found.push_back({std::move(key), std::move(keyText), value()});
            skipBlanks();
        } while (take(','));
        take('}');
        return found;
    }

    std::string_view rest_;
};

class JSONDocument::Writer {
public:
    explicit Writer(KeyOrder order) : order_{order} {}

    void write(const JSONDocument& value) {
        if (const Array* elements = value.array()) {
            writeArray(*elements);
        } else if (const Object* members = value.object()) {
            writeObject(*members);
        } else {
            text += std::get<std::string>(value.content_);
        }
    }

    std::string text;

private:
    void writeArray(const Array& elements) {
        open('[');
        for (const JSONDocument& element : elements) {
            beginLine(&element == &elements.front());
            write(element);
        }
        close(']', elements.empty());
    }

    void writeObject(const Object& members) {
        std::vector<const Member*> ordered;
        for (const Member& member : members)
            ordered.push_back(&member);
        if (order_ == KeyOrder::Sorted) {
            std::stable_sort(ordered.begin(), ordered.end(),
                             [](const Member* left, const Member* right) { return left->key < right->key; });
        }
        open('{');
        for (const Member* member : ordered) {
            beginLine(member == ordered.front());
            text.append(member->keyText).append(": ");
            write(member->value);
        }
        close('}', members.empty());
    }

    void open(char bracket) {
        text += bracket;
        ++level_;
    }

    void close(char bracket, bool isEmpty) {
        --level_;
        if (!isEmpty) indent();
        text += bracket;
    }

    void beginLine(bool isFirst) {
        if (!isFirst) text += ',';
        indent();
    }

    void indent() { text.append("\n").append(2 * level_, ' '); }

    KeyOrder order_;
    std::size_t level_ = 0;
};

std::optional<JSONDocument> JSONDocument::parse(std::string_view text) {
    JSONParser parser;
    if (!parser.parse(text).isPresent()) return std::nullopt;
    return Reader{text}.value();
}

JSONDocument JSONDocument::of(const JSONTree& tree) {
    const std::string text = JSONWriter::compact(tree);
    return Reader{text}.value();
}

std::optional<std::string> JSONDocument::string() const {
    const auto* text = std::get_if<std::string>(&content_);
    return text != nullptr && text->starts_with('"') ? std::optional{unescaped(*text)} : std::nullopt;
}

const JSONDocument* JSONDocument::member(std::string_view key) const noexcept {
    const Object* members = object();
    if (members == nullptr) return nullptr;
    const auto found =
        std::find_if(members->rbegin(), members->rend(), [&](const Member& member) { return member.key == key; });
    return found == members->rend() ? nullptr : &found->value;
}

JSONDocument* JSONDocument::member(std::string_view key) noexcept {
    return const_cast<JSONDocument*>(static_cast<const JSONDocument*>(this)->member(key));
}

void JSONDocument::set(std::string_view key, JSONDocument value) {
    if (JSONDocument* old = member(key)) {
        *old = std::move(value);
    } else {
        assert(object() != nullptr);
        object()->push_back({std::string{key}, JSONWriter::compact(std::string{key}), std::move(value)});
    }
}

void JSONDocument::remove(std::string_view key) {
    assert(object() != nullptr);
    std::erase_if(*object(), [&](const Member& member) { return member.key == key; });
}

std::string JSONDocument::pretty(KeyOrder order) const {
    Writer writer{order};
    writer.write(*this);
    return std::move(writer.text);
}

}  // namespace quorvane
