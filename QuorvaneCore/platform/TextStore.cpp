#include "QuorvaneCore/platform/TextStore.h"

#include <cstring>

namespace quorvane {

char* TextStore::room(std::size_t size) {
    constexpr std::size_t blockBytes = 32768;
    if (size > blockBytes / 4) {
        // A block of its own, beside the one that is being filled.
        return blocks_.emplace_back(std::make_unique_for_overwrite<char[]>(size)).get();
    }
    if (size > left_) {
        free_ = blocks_.emplace_back(std::make_unique_for_overwrite<char[]>(blockBytes)).get();
        left_ = blockBytes;
    }
    char* const found = free_;
    free_ += size;
    left_ -= size;
    return found;
}

std::string_view TextStore::keep(std::string_view text) {
    if (text.empty()) return {};
    char* const copy = room(text.size());
    std::memcpy(copy, text.data(), text.size());
    return {copy, text.size()};
}

}  // namespace quorvane
