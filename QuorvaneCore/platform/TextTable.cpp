#include "QuorvaneCore/platform/TextTable.h"

#include <cassert>

#include "QuorvaneCore/platform/TextHash.h"

namespace quorvane {

std::size_t TextTable::slot(std::string_view text, std::uint64_t hash) const noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = static_cast<std::size_t>(hash) & mask;
    while (slots_[at] != none) {
        const Entry& entry = entries_[slots_[at]];
        if (entry.hash == hash && entry.text == text) break;
        at = (at + 1) & mask;
    }
    return at;
}

std::uint32_t TextTable::add(std::string_view text) {
    if (2 * (entries_.size() + 1) > slots_.size()) grow();
    const std::uint64_t hash = textHash(text);
    std::uint32_t& number = slots_[slot(text, hash)];
    if (number == none) {
        assert(entries_.size() < none);
        number = static_cast<std::uint32_t>(entries_.size());
        entries_.push_back({.text = store_.keep(text), .hash = hash});
    }
    return number;
}

std::uint32_t TextTable::find(std::string_view text) const noexcept {
    return slots_.empty() ? none : slots_[slot(text, textHash(text))];
}

void TextTable::grow() {
    constexpr std::size_t atLeast = 16;
    const std::size_t mask = (slots_.empty() ? atLeast : 2 * slots_.size()) - 1;
    slots_.assign(mask + 1, none);
    for (std::uint32_t number = 0; number < entries_.size(); ++number) {
        std::size_t at = static_cast<std::size_t>(entries_[number].hash) & mask;
        while (slots_[at] != none)
            at = (at + 1) & mask;
        slots_[at] = number;
    }
}

}  // namespace quorvane
