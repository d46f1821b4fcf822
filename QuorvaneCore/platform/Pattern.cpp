#include "QuorvaneCore/platform/Pattern.h"

#include <cassert>

#include <re2/re2.h>

namespace quorvane {
namespace {

re2::RE2::Options options() {
    re2::RE2::Options chosen;
    chosen.set_encoding(re2::RE2::Options::EncodingLatin1);
    chosen.set_log_errors(false);
    return chosen;
}

re2::StringPiece piece(std::string_view text) {
    return {text.data(), text.size()};
}

}  // namespace

struct Pattern::State {
    re2::RE2 expression;
};

Pattern::Pattern(std::string_view expression) : state_{new State{.expression{piece(expression), options()}}} {
    assert(state_->expression.ok());
}

Pattern::Pattern(Pattern&&) noexcept = default;
Pattern& Pattern::operator=(Pattern&&) noexcept = default;
Pattern::~Pattern() = default;

std::optional<std::size_t> Pattern::search(std::string_view text) const {
    re2::StringPiece match;
    if (!state_->expression.Match(piece(text), 0, text.size(), re2::RE2::UNANCHORED, &match, 1)) return std::nullopt;
    return static_cast<std::size_t>(match.data() - text.data());
}

}  // namespace quorvane
