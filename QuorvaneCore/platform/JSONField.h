#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvane {

/// A value as far as readers of records ask for it: a text, a number, two numbers, or that there is something.
class JSONField {
public:
    struct Pair {
        double first;
        double second;

        friend bool operator==(const Pair&, const Pair&) = default;
    };

    [[nodiscard]] bool isPresent() const noexcept { return kind_ != Kind::Absent; }

    [[nodiscard]] std::optional<std::string_view> text() const noexcept {
        return kind_ == Kind::Text ? std::optional{text_} : std::nullopt;
    }
    /// A number whose text is that of an integer, and that 64 bits with sign hold.
    [[nodiscard]] std::optional<std::int64_t> integer() const noexcept {
        return kind_ == Kind::Integer ? std::optional{integer_} : std::nullopt;
    }
    /// Any number, rounded to a float.
    [[nodiscard]] std::optional<double> number() const noexcept {
        if (kind_ == Kind::Integer) return static_cast<double>(integer_);
        return kind_ == Kind::Real ? std::optional{real_} : std::nullopt;
    }
    /// An array of two numbers and nothing else.
    [[nodiscard]] std::optional<Pair> pair() const noexcept {
        return kind_ == Kind::Pair ? std::optional{pair_} : std::nullopt;
    }

    void setAbsent() noexcept { kind_ = Kind::Absent; }
    /// Some other value.
    void setOther() noexcept { kind_ = Kind::Other; }
    void set(std::string_view text) noexcept {
        kind_ = Kind::Text;
        text_ = text;
    }
    void set(std::int64_t integer) noexcept {
        kind_ = Kind::Integer;
        integer_ = integer;
    }
    void set(double real) noexcept {
        kind_ = Kind::Real;
        real_ = real;
    }
    void set(Pair pair) noexcept {
        kind_ = Kind::Pair;
        pair_ = pair;
    }

private:
    enum class Kind : std::uint8_t { Absent, Other, Text, Integer, Real, Pair };

    // Filled in place, part by part. A variant is made elsewhere and copied as a whole, and the processor waits until
    // it can read as a whole what was just written in parts: that took a third of the time of reading a record.
    Kind kind_ = Kind::Absent;
    union {
        std::string_view text_{};
        std::int64_t integer_;
        double real_;
        Pair pair_;
    };
};

}  // namespace quorvane
