#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace quorvane {

/// The keys that a reader of records asks for, arranged so that a key of a text is told from all of them by one look.
/// `JSONKeySet` makes one, and must outlive it.
class JSONKeys {
public:
    static constexpr std::size_t slotCount = 128;
    using Slots = std::array<std::uint8_t, slotCount>;
    static constexpr std::uint8_t noKey = 255;

    constexpr JSONKeys(std::span<const std::string_view> keys, const Slots& slots, std::uint32_t multiplier) noexcept
        : keys_{keys}, slots_{slots.data()}, multiplier_{multiplier} {}

    [[nodiscard]] std::span<const std::string_view> all() const noexcept { return keys_; }

    /// The only one of the keys that can be this one, by its number; `noKey` if none can.
    [[nodiscard]] std::uint8_t candidate(std::string_view key) const noexcept { return slots_[slot(key, multiplier_)]; }

    /// What a slot is found by: length, first, middle and last character. Others share them, but few of one object.
    [[nodiscard]] static constexpr std::size_t slot(std::string_view key, std::uint32_t multiplier) noexcept {
        if (key.empty()) return 0;
        const auto byte = [&](std::size_t at) { return std::uint32_t{static_cast<unsigned char>(key[at])}; };
        const std::uint32_t traits = static_cast<std::uint32_t>(key.size()) ^ (byte(0) << 8) ^
                                     (byte(key.size() / 2) << 16) ^ (byte(key.size() - 1) << 24);
        return (traits * multiplier) >> 25;
    }

private:
    std::span<const std::string_view> keys_;
    const std::uint8_t* slots_;
    std::uint32_t multiplier_;
};

/// A constant set of different keys, none of them empty. Keys that cannot be arranged do not compile.
template <std::size_t Count>
class JSONKeySet {
public:
    explicit consteval JSONKeySet(const std::array<std::string_view, Count>& keys) : keys_{keys} {
        static_assert(Count <= JSONKeys::slotCount / 4, "few slots may be taken, or no arrangement is found");
        while (!arrange())
            multiplier_ += 2;
    }

    [[nodiscard]] constexpr JSONKeys keys() const noexcept { return {keys_, slots_, multiplier_}; }

private:
    /// Whether each key has a slot of its own.
    consteval bool arrange() {
        slots_.fill(JSONKeys::noKey);
        for (std::size_t index = 0; index < Count; ++index) {
            std::uint8_t& slot = slots_[JSONKeys::slot(keys_[index], multiplier_)];
            if (slot != JSONKeys::noKey) return false;
            slot = static_cast<std::uint8_t>(index);
        }
        return true;
    }

    std::array<std::string_view, Count> keys_;
    JSONKeys::Slots slots_{};
    std::uint32_t multiplier_ = 0x9e3779b1;
};

}  // namespace quorvane
