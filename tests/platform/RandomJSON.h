#pragma once
#include <random>
#include <string>

#include "QuorvaneCore/platform/JSONTree.h"

namespace quorvane::testing {

/// Random but repeatable JSON.
class RandomJSON {
public:
    explicit RandomJSON(std::uint64_t seed) : random_{seed} {}

    /// A value without doubled keys, whose floats are no whole numbers: written and read again it is itself.
    JSONTree tree(int depth);

    /// The text of an object in one of many ways to write it: white space, escapes, doubled and empty keys, nested
    /// containers, numbers of every form, some beyond 64 bits. Keys are often among those of `key()`.
    std::string objectText(int depth);

    /// One of a few keys without characters that JSON escapes.
    std::string key();

    std::size_t below(std::size_t count) { return std::uniform_int_distribution<std::size_t>{0, count - 1}(random_); }

private:
    std::string plainText();
    std::string stringText();
    std::string keyText();
    std::string numberText();
    std::string valueText(int depth);
    std::string arrayText(int depth);
    std::string blank();

    std::mt19937_64 random_;
};

}  // namespace quorvane::testing
