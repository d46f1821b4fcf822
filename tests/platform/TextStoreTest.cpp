#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/TextStore.h"

namespace quorvane {
namespace {

TEST(TextStore, copiesStayWhereTheyAre) {
    TextStore store;
    std::vector<std::string> texts;
    std::vector<std::string_view> copies;
    for (std::size_t index = 0; index < 3000; ++index) {
        // Now and then one that is larger than a block.
        texts.emplace_back(index % 500 == 499 ? 100'000 : index % 90, static_cast<char>('a' + index % 26));
        copies.push_back(store.keep(texts.back()));
    }
    for (std::size_t index = 0; index < texts.size(); ++index) {
        ASSERT_EQ(copies[index], texts[index]);
        ASSERT_TRUE(texts[index].empty() || copies[index].data() != texts[index].data());
    }
}

}  // namespace
}  // namespace quorvane
