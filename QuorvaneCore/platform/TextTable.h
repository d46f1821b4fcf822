#pragma once
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "QuorvaneCore/platform/TextStore.h"

namespace quorvane {

/// Numbers different texts in the order in which they come, from 0 on. One thread at a time.
class TextTable {
public:
    /// The number of a text that is not in the table.
    static constexpr std::uint32_t none = 0xffffffff;

    TextTable() = default;
    TextTable(const TextTable&) = delete;
    TextTable& operator=(const TextTable&) = delete;

    /// The number of that text, which is kept if it is new.
    std::uint32_t add(std::string_view text);
    [[nodiscard]] std::uint32_t find(std::string_view text) const noexcept;

    /// The text of that number, valid as long as the table.
    [[nodiscard]] std::string_view text(std::uint32_t number) const noexcept { return entries_[number].text; }
    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }

private:
    struct Entry {
        std::string_view text;
        std::uint64_t hash = 0;
    };

    /// Where a text of that hash is or belongs.
    [[nodiscard]] std::size_t slot(std::string_view text, std::uint64_t hash) const noexcept;
    void grow();

    std::vector<Entry> entries_;
    std::vector<std::uint32_t> slots_;  ///< numbers; a power of two, at least half of them free
    TextStore store_;
};

}  // namespace quorvane
