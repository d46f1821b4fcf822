// One line of the capture file.

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/providers/CursorProvider.h"
#include "tests/cursor/CursorTestSupport.h"

namespace quorvane::testing {
namespace {

struct DecodeCase {
    const char* name;
    std::string line;
    std::optional<std::string> expected;
};
class CursorDecode : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(CursorDecode, givesTheGeneration) {
    const std::optional<UsageEvent> event = CursorProvider::decode(GetParam().line);
    EXPECT_EQ(event ? std::optional{told(*event)} : std::nullopt, GetParam().expected);
}

/// A line with a good identity and time; `members` is JSON.
std::string with(const std::string& members) {
    return R"({"captured_at":1000,"generation_id":"g",)" + members + "}";
}
/// A line with a token; `members` is JSON.
std::string used(const std::string& members) {
    return R"({"output_tokens":1,)" + members + "}";
}

const std::string plain = "cursor g unknown-conversation cursor 1000.000 ";

INSTANTIATE_TEST_SUITE_P(
    WholeLines, CursorDecode,
    ::testing::Values(
        DecodeCase{"whatTheScriptWrites",
                   R"({"captured_at":1789374066,"conversation_id_b64":"NjY4ZuKApg==","generation_id_b64":"NDkwYg==",)"
                   R"("model_b64":"Y29tcG9zZXItMi41","input_tokens":23756,"output_tokens":5,)"
                   R"("cache_read_tokens":23617,"cache_write_tokens":47})",
                   "cursor 490b 668f… composer-2.5 1789374066.000 92/5/47/0/23617 (none)"},
        DecodeCase{"plainKeys",
                   R"({"captured_at":1000.5,"conversation_id":"c","generation_id":"g","model":"m","output_tokens":1})",
                   "cursor g c m 1000.500 0/1/0/0/0 (none)"},
        DecodeCase{"noJSON", "{", std::nullopt}, DecodeCase{"noObject", "[]", std::nullopt},
        DecodeCase{"empty", "", std::nullopt}, DecodeCase{"tornLine", R"({"captured_at":1000,"gener)", std::nullopt},
        DecodeCase{"byteOrderMark", "\xef\xbb\xbf" + with(R"("output_tokens":1)"), std::nullopt}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Texts, CursorDecode,
    ::testing::Values(
        DecodeCase{"noGeneration", used(R"("captured_at":1000)"), std::nullopt},
        DecodeCase{"emptyGeneration", used(R"("captured_at":1000,"generation_id":"")"), std::nullopt},
        DecodeCase{"emptyGenerationHidesTheEncodedOne",
                   used(R"("captured_at":1000,"generation_id":"","generation_id_b64":"Zw==")"), std::nullopt},
        DecodeCase{"plainGenerationBeforeTheEncodedOne",
                   used(R"("captured_at":1000,"generation_id_b64":"eA==","generation_id":"g")"),
                   plain + "0/1/0/0/0 (none)"},
        DecodeCase{"numberAsGenerationFallsThroughToTheEncodedOne",
                   used(R"("captured_at":1000,"generation_id":7,"generation_id_b64":"Zw==")"),
                   plain + "0/1/0/0/0 (none)"},
        DecodeCase{"nullAsGenerationFallsThroughToTheEncodedOne",
                   used(R"("captured_at":1000,"generation_id":null,"generation_id_b64":"Zw==")"),
                   plain + "0/1/0/0/0 (none)"},
        DecodeCase{"numberAsGenerationAlone", used(R"("captured_at":1000,"generation_id":7)"), std::nullopt},
        DecodeCase{"encodedGenerationIsNoBase64", used(R"("captured_at":1000,"generation_id_b64":"Zw=")"),
                   std::nullopt},
        DecodeCase{"encodedGenerationHasALineEnd", used(R"("captured_at":1000,"generation_id_b64":"Zw==\n")"),
                   std::nullopt},
        DecodeCase{"encodedGenerationIsNoUTF8", used(R"("captured_at":1000,"generation_id_b64":"/w==")"), std::nullopt},
        DecodeCase{"encodedGenerationIsEmpty", used(R"("captured_at":1000,"generation_id_b64":"")"), std::nullopt},
        DecodeCase{"encodedGenerationIsNoText", used(R"("captured_at":1000,"generation_id_b64":1)"), std::nullopt},
        DecodeCase{"brokenConversationAndModel",
                   with(R"("output_tokens":1,"conversation_id_b64":"?","model_b64":"/w==")"),
                   plain + "0/1/0/0/0 (none)"},
        DecodeCase{"emptyConversationAndModel", with(R"("output_tokens":1,"conversation_id":"","model":"")"),
                   plain + "0/1/0/0/0 (none)"},
        DecodeCase{"encodedConversationAndModel",
                   with(R"("output_tokens":1,"conversation_id_b64":"Yw==","model_b64":"bQ==")"),
                   "cursor g c m 1000.000 0/1/0/0/0 (none)"}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Times, CursorDecode,
    ::testing::Values(DecodeCase{"noTime", used(R"("generation_id":"g")"), std::nullopt},
                      DecodeCase{"timeZero", used(R"("generation_id":"g","captured_at":0)"), std::nullopt},
                      DecodeCase{"timeBelowZero", used(R"("generation_id":"g","captured_at":-1)"), std::nullopt},
                      DecodeCase{"timeAsText", used(R"("generation_id":"g","captured_at":"1000")"), std::nullopt},
                      DecodeCase{"timeAsBoolean", used(R"("generation_id":"g","captured_at":true)"), std::nullopt},
                      DecodeCase{"smallestTime", used(R"("generation_id":"g","captured_at":0.001)"),
                                 "cursor g unknown-conversation cursor 0.001 0/1/0/0/0 (none)"}),
    [](const auto& row) { return std::string{row.param.name}; });

INSTANTIATE_TEST_SUITE_P(
    Counts, CursorDecode,
    ::testing::Values(
        DecodeCase{"cacheInsideTheInput",
                   with(R"("input_tokens":100,"output_tokens":7,"cache_read_tokens":60,"cache_write_tokens":30)"),
                   plain + "10/7/30/0/60 (none)"},
        DecodeCase{"moreCacheThanInput", with(R"("input_tokens":100,"cache_read_tokens":80,"cache_write_tokens":30)"),
                   plain + "0/0/30/0/80 (none)"},
        DecodeCase{"negativeOutput", with(R"("input_tokens":100,"output_tokens":-1)"), std::nullopt},
        DecodeCase{"negativeInput", with(R"("input_tokens":-1,"output_tokens":1)"), std::nullopt},
        DecodeCase{"negativeCacheRead", with(R"("input_tokens":9,"cache_read_tokens":-1)"), std::nullopt},
        DecodeCase{"negativeCacheWrite", with(R"("input_tokens":9,"cache_write_tokens":-1)"), std::nullopt},
        DecodeCase{"allZero",
                   with(R"("input_tokens":0,"output_tokens":0,"cache_read_tokens":0,"cache_write_tokens":0)"),
                   std::nullopt},
        DecodeCase{"noCounts", with(R"("x":1)"), std::nullopt},
        DecodeCase{"inputAlone", with(R"("input_tokens":1)"), plain + "1/0/0/0/0 (none)"},
        DecodeCase{"cacheReadAlone", with(R"("cache_read_tokens":1)"), plain + "0/0/0/0/1 (none)"},
        DecodeCase{"cacheWriteAlone", with(R"("cache_write_tokens":1)"), plain + "0/0/1/0/0 (none)"},
        DecodeCase{"fractionIsCutOff", with(R"("input_tokens":3.9)"), plain + "3/0/0/0/0 (none)"},
        DecodeCase{"fractionBelowZeroIsZero", with(R"("input_tokens":3,"output_tokens":-0.9)"),
                   plain + "3/0/0/0/0 (none)"},
        DecodeCase{"textIsZero", with(R"("input_tokens":"9","output_tokens":1)"), plain + "0/1/0/0/0 (none)"},
        DecodeCase{"largestCount", with(R"("output_tokens":9223372036854775807)"),
                   plain + "0/9223372036854775807/0/0/0 (none)"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CursorDecodeLimits, aCountBeyond64BitsEndsTheProcess) {
    EXPECT_DEATH(static_cast<void>(CursorProvider::decode(with(R"("output_tokens":9223372036854775808)"))), "");
    EXPECT_DEATH(
        static_cast<void>(CursorProvider::decode(with(R"("output_tokens":9223372036854775807,"cache_read_tokens":1)"))),
        "");
    EXPECT_FALSE(CursorProvider::decode(used(R"("input_tokens":1e30)"))) << "never comes to the count";
}

}  // namespace
}  // namespace quorvane::testing
