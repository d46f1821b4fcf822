#include "tests/docs/Page.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <gtest/gtest.h>

namespace quorvane::testing {

Page::Page(const std::string& name) : path_{std::filesystem::path{QUORVANE_SOURCE} / "docs" / name} {
    std::ifstream stream{path_, std::ios::binary};
    if (!stream) throw std::runtime_error{"cannot read " + path_};
    text_.assign(std::istreambuf_iterator<char>{stream}, {});
    findBlocks();
}

void Page::findBlocks() {
    constexpr std::string_view fence = "```";
    blocks_.clear();
    places_.clear();
    bool isInside = false;
    for (std::size_t at = 0; at < text_.size();) {
        const std::size_t end = text_.find('\n', at);
        if (end == std::string::npos) throw std::runtime_error{path_ + " does not end with a line"};
        const std::string line = text_.substr(at, end - at);
        at = end + 1;
        if (line.starts_with(fence) && !isInside) {
            blocks_.push_back({.language = line.substr(fence.size()), .text = {}});
            places_.push_back(at);
            isInside = true;
        } else if (line == fence) {
            isInside = false;
        } else if (isInside) {
            blocks_.back().text += line + "\n";
        }
    }
    if (isInside) throw std::runtime_error{path_ + " has a block without an end"};
}

std::string Page::block(const std::string& language, const std::string& part) const {
    std::vector<std::string> found;
    for (const Block& block : blocks_) {
        if (block.language == language && block.text.find(part) != std::string::npos) found.push_back(block.text);
    }
    EXPECT_EQ(found.size(), 1U) << "blocks with " << part << " in " << path_;
    return found.size() == 1 ? found.front() : "";
}

void Page::replace(std::size_t block, const std::string& text) {
    text_.replace(places_.at(block), blocks_.at(block).text.size(), text);
    std::ofstream stream{path_, std::ios::binary | std::ios::trunc};
    stream << text_;
    if (!stream.flush()) throw std::runtime_error{"cannot write " + path_};
    findBlocks();
}

bool updatesExpected() {
    return std::getenv("QUORVANE_UPDATE_EXPECTED") != nullptr;
}

}  // namespace quorvane::testing
