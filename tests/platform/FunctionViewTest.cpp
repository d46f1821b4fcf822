#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/FunctionView.h"

namespace quorvane {
namespace {

int applied(FunctionView<int(int)> function, int argument) {
    return function(argument);
}

int doubled(int value) {
    return 2 * value;
}

TEST(FunctionView, callsWhatItRefersTo) {
    int calls = 0;
    auto counting = [&calls](int value) {
        ++calls;
        return value + calls;
    };
    EXPECT_EQ(applied(counting, 10), 11);
    EXPECT_EQ(applied(counting, 10), 12);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(applied([offset = 5](int value) { return value + offset; }, 1), 6);
    auto* pointer = &doubled;
    EXPECT_EQ(applied(pointer, 21), 42);
}

TEST(FunctionView, stateOfTheCallableIsNotCopied) {
    auto stateful = [sum = 0](int value) mutable { return sum += value; };
    EXPECT_EQ(applied(stateful, 1), 1);
    EXPECT_EQ(applied(stateful, 2), 3);
}

TEST(FunctionView, argumentsAreForwarded) {
    std::unique_ptr<std::string> kept;
    const auto keep = [&](std::unique_ptr<std::string> text) { kept = std::move(text); };
    const FunctionView<void(std::unique_ptr<std::string>)> view{keep};
    view(std::make_unique<std::string>("moved"));
    ASSERT_TRUE(kept);
    EXPECT_EQ(*kept, "moved");
}

}  // namespace
}  // namespace quorvane
