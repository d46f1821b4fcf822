#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace quorvane {

/// A JSON value that owns all it holds: what is built to be written, and what is parsed to be kept.
/// (`JSONValue` is the view for reading logs.)
struct JSONTree {
    using Array = std::vector<JSONTree>;
    using Object = std::map<std::string, JSONTree, std::less<>>;
    using Content = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object>;

    Content content = nullptr;

    JSONTree() = default;
    JSONTree(std::nullptr_t) {}                                         // NOLINT: literals read as they are written
    JSONTree(bool value) : content{value} {}                            // NOLINT
    JSONTree(int value) : content{static_cast<std::int64_t>(value)} {}  // NOLINT
    JSONTree(std::int64_t value) : content{value} {}                    // NOLINT
    JSONTree(std::uint64_t value) : content{value} {}                   // NOLINT
    JSONTree(double value) : content{value} {}                          // NOLINT
    JSONTree(const char* value) : content{std::string{value}} {}        // NOLINT
    JSONTree(std::string value) : content{std::move(value)} {}          // NOLINT
    JSONTree(Array value) : content{std::move(value)} {}                // NOLINT
    JSONTree(Object value) : content{std::move(value)} {}               // NOLINT

    friend bool operator==(const JSONTree&, const JSONTree&) = default;
};

}  // namespace quorvane
