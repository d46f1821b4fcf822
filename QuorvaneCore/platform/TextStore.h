#pragma once
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace quorvane {

/// Keeps copies of many short texts, all of which go at once. One thread at a time.
class TextStore {
public:
    TextStore() = default;
    TextStore(const TextStore&) = delete;
    TextStore& operator=(const TextStore&) = delete;

    /// The copy, valid as long as the store.
    [[nodiscard]] std::string_view keep(std::string_view text);

private:
    [[nodiscard]] char* room(std::size_t size);

    std::vector<std::unique_ptr<char[]>> blocks_;
    char* free_ = nullptr;  ///< in the last block
    std::size_t left_ = 0;
};

}  // namespace quorvane
