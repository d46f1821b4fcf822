#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/codex/CodexTestSupport.h"
#include "tests/codex/LiteralTokenCounts.h"

namespace quorvane::testing {
namespace {

/// A session whose totals rise, stall, fall and restart, between turns that switch model and folder; what the reader
/// must make of it; and what its calls must add up to.
class RandomSession {
public:
    explicit RandomSession(unsigned seed, bool mayCountBelowZero = false)
        : random_{seed}, mayCountBelowZero_{mayCountBelowZero} {
        expected.messageId = "rollout-parsed";
        namesItsModel_ = chance(0.9);
        for (int step = 0; step < 60; ++step)
            addLine();
    }

    std::vector<std::string> lines;
    LiteralTokenCounts expected;
    TokenUsage finishedSeries;  ///< what stood at the end of each series but the last
    TokenUsage standing;        ///< what stands now
    bool isEverBelowZero = false;

    [[nodiscard]] std::string text() const {
        std::string all;
        for (const std::string& one : lines)
            all += one;
        return all;
    }

private:
    bool chance(double probability) { return std::bernoulli_distribution{probability}(random_); }
    std::int64_t between(std::int64_t least, std::int64_t most) {
        return std::uniform_int_distribution<std::int64_t>{least, most}(random_);
    }

    void addLine() {
        const std::int64_t kind = between(0, 19);
        if (kind == 0 && namesItsModel_) {
            addTurn();
        } else if (kind == 1) {
            addSessionMeta();
        } else if (kind == 2) {
            lines.push_back(line("response_item", R"({"type":"message","text":"\u001b[1mtoken_count"})"));
        } else if (kind == 3) {
            lines.push_back("{\"type\":\"event_msg\",\"payl\n");
        } else {
            addTotals();
        }
    }

    void addTurn() {
        const std::string model = "model-" + std::to_string(between(0, 2));
        const std::string folder = "folder-" + std::to_string(between(0, 2));
        lines.push_back(line("turn_context", R"({"cwd":"/home/)" + folder + R"(","model":")" + model + "\"}"));
        expected.project = folder;
        expected.recordModel(model);
    }

    void addSessionMeta() {
        const std::string folder = "meta-" + std::to_string(between(0, 1));
        std::string payload = R"({"cwd":"/)" + folder + '"';
        if (namesItsModel_ && chance(0.5)) {
            payload += R"(,"model":"of-the-session")";
            if (!expected.model) expected.recordModel("of-the-session");
        }
        lines.push_back(line("session_meta", payload + "}"));
        expected.project = folder;
    }

    void addTotals() {
        move();
        Totals told = totals_;
        if (mayCountBelowZero_ && chance(0.1)) told.output = -between(1, 40);
        isEverBelowZero = isEverBelowZero || told.output < 0;
        // Times grow by a second a line, so that a call is told from every other.
        const double when = testNow + static_cast<double>(lines.size());
        lines.push_back(tokenCount(told, when));
        expected.count(told.input, told.cached, told.output, Date{when});

        const auto sum = [](const Totals& of) { return of.input + of.cached + of.output; };
        if (hasTotals_ && sum(told_) > 2 * sum(told)) finishedSeries += standing;
        standing = {.input = std::max<std::int64_t>(told.input - told.cached, 0),
                    .output = told.output,
                    .cacheRead = told.cached};
        told_ = told;
        hasTotals_ = true;
    }

    void move() {
        switch (between(0, 9)) {
            case 0: break;  // the same total again
            case 1: totals_ = {totals_.input / 3, totals_.cached / 3, totals_.output / 3}; break;
            case 2: totals_ = {between(0, 50), between(0, 50), between(0, 20)}; break;
            case 3: totals_.output -= between(0, totals_.output / 4); break;
            case 4: totals_.cached -= between(0, totals_.cached / 4); break;
            case 5: totals_.input -= between(0, totals_.input / 4); break;
            case 6:  // about half
                totals_ = {totals_.input / 2, totals_.cached / 2, totals_.output / 2};
                break;
            default:
                totals_.input += between(0, 100);
                totals_.cached += between(0, 100);
                totals_.output += between(0, 30);
        }
    }

    std::mt19937 random_;
    bool mayCountBelowZero_;
    bool namesItsModel_ = true;
    bool hasTotals_ = false;
    Totals totals_;
    Totals told_;  ///< the last total in a line
};

void expectSame(const std::vector<UsageEvent>& events, const std::vector<UsageEvent>& expected) {
    ASSERT_EQ(told(events, true), told(expected, true));
    for (std::size_t index = 0; index < events.size(); ++index) {
        EXPECT_EQ(events[index].id(), expected[index].id());
        EXPECT_EQ(events[index].timestamp, expected[index].timestamp);
        EXPECT_EQ(events[index].project, expected[index].project);
        EXPECT_EQ(events[index].usage, expected[index].usage);
        EXPECT_EQ(events[index].provider, ProviderID::Codex);
    }
}

constexpr unsigned sessions = 400;

TEST(CodexUsageProperty, theCallsAreThoseOfTheLiteralRules) {
    const RolloutHome home;
    for (unsigned seed = 0; seed < sessions; ++seed) {
        SCOPED_TRACE(seed);
        const RandomSession session{seed, seed % 4 == 3};
        ASSERT_TRUE(session.expected.fits);
        expectSame(home.parse(session.text()), session.expected.events);
        if (HasFatalFailure()) return;
    }
}

TEST(CodexUsageProperty, theCallsAddUpToWhatStands) {
    const RolloutHome home;
    for (unsigned seed = 0; seed < sessions; ++seed) {
        const RandomSession session{seed};
        TokenUsage sum;
        for (const UsageEvent& event : home.parse(session.text()))
            sum += event.usage;
        ASSERT_EQ(sum, session.finishedSeries + session.standing) << seed;
    }
}

TEST(CodexUsageProperty, noNumberIsUsedTwiceAndNoCallIsEmpty) {
    const RolloutHome home;
    for (unsigned seed = 0; seed < sessions; ++seed) {
        const RandomSession session{seed, true};
        const std::vector<UsageEvent> events = home.parse(session.text());
        std::set<std::string> ids;
        std::int64_t last = -1;
        for (const UsageEvent& event : events) {
            ids.insert(event.requestId);
            EXPECT_GT(event.usage.total(), 0);
            EXPECT_GT(std::stoll(event.requestId), last) << seed;
            last = std::stoll(event.requestId);
        }
        ASSERT_EQ(ids.size(), events.size()) << seed;
    }
}

/// A call that once had a number keeps it, and its time, as long as it stands; and no later one gets it.
TEST(CodexUsageProperty, numbersStayWhileTheFileGrows) {
    const RolloutHome home;
    for (unsigned seed = 0; seed < 12; ++seed) {
        const RandomSession session{seed};
        std::map<std::string, Date> known;
        std::string text;
        for (const std::string& line : session.lines) {
            text += line;
            for (const UsageEvent& event : home.parse(text)) {
                const auto [first, isNew] = known.emplace(event.requestId, event.timestamp);
                ASSERT_EQ(first->second, event.timestamp) << seed << ", call " << event.requestId;
            }
        }
        EXPECT_FALSE(known.empty());
    }
}

TEST(CodexUsageProperty, theChunkSizeDoesNotMatter) {
    const RolloutHome home;
    for (const std::int64_t chunkSize : {1, 2, 63, 64, 65, 1000}) {
        const RandomSession session{77};
        expectSame(home.parse(session.text(), chunkSize), session.expected.events);
    }
}

TEST(CodexUsageProperty, theSessionsAreWorthTesting) {
    unsigned restarted = 0;
    unsigned belowZero = 0;
    unsigned removed = 0;
    for (unsigned seed = 0; seed < sessions; ++seed) {
        const RandomSession session{seed, true};
        restarted += session.finishedSeries == TokenUsage{} ? 0 : 1;
        belowZero += session.isEverBelowZero ? 1 : 0;
        const auto& events = session.expected.events;
        removed += !events.empty() && events.back().requestId != std::to_string(events.size() - 1) ? 1 : 0;
    }
    EXPECT_GT(restarted, sessions / 2);
    EXPECT_GT(belowZero, sessions / 2);
    EXPECT_GT(removed, sessions / 2);
}

}  // namespace
}  // namespace quorvane::testing
