#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace quorvane::testing {

/// A page of the documentation as a list of its fenced blocks.
class Page {
public:
    struct Block {
        std::string language;  ///< the word behind the fence; may be empty
        std::string text;      ///< every line of it ends with a line feed
    };

    /// `name` is that of a file in docs/. Throws if it cannot be read.
    explicit Page(const std::string& name);

    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    [[nodiscard]] const std::vector<Block>& blocks() const noexcept { return blocks_; }
    /// The only block of that language that contains `part`; the test fails, and it is empty, if there is not one
    /// alone.
    [[nodiscard]] std::string block(const std::string& language, const std::string& part) const;

    /// Writes the page anew with that text in the block.
    void replace(std::size_t block, const std::string& text);

private:
    void findBlocks();

    std::string path_;
    std::string text_;
    std::vector<Block> blocks_;
    std::vector<std::size_t> places_;  ///< where each block's text begins
};

/// Whether what the pages have of the program's own output is to be written anew instead of compared: the environment
/// variable QUORVANE_UPDATE_EXPECTED is set.
[[nodiscard]] bool updatesExpected();

}  // namespace quorvane::testing
