// Where the agent lives, and whether it does.

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/model/GrokHome.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/providers/GrokProvider.h"
#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;

TEST(GrokHome, isTheOneGivenThenThatOfTheEnvironmentThenTheUsualOne) {
    const GrokScratchHome home;
    EXPECT_EQ(GrokHome::path(), home.path(".grok"));
    home.setGrokHome("/srv/grok");
    EXPECT_EQ(GrokHome::path(), "/srv/grok");
    EXPECT_EQ(GrokHome::path("/given"), "/given");
    home.setGrokHome("");
    EXPECT_EQ(GrokHome::path(), home.path(".grok"));
    EXPECT_FALSE(home.exists(".grok")) << "nothing is created";
}

TEST(GrokHome, readerAndCaptureLookInTheSamePlace) {
    const GrokScratchHome home;
    EXPECT_THAT(GrokProvider{}.watchPaths(), ElementsAre(home.path(".grok/sessions")));
    EXPECT_EQ(GrokRateLimitCapture::grokHome(), home.path(".grok"));
    home.setGrokHome(home.path("other"));
    EXPECT_THAT(GrokProvider{}.watchPaths(), ElementsAre(home.path("other/sessions")));
    EXPECT_EQ(GrokProvider{}.sessionsRoot(), home.path("other/sessions"));
    EXPECT_EQ(GrokRateLimitCapture::grokHome(), home.path("other"));
    EXPECT_EQ(GrokRateLimitCapture::hooksDirectory(), home.path("other/hooks"));
    EXPECT_EQ(GrokRateLimitCapture::hookURL(), home.path("other/hooks/quorvane-rate-limit-capture.json"));
    EXPECT_EQ(GrokRateLimitCapture::defaultLogURL(), home.path("other/logs/unified.jsonl"));
    EXPECT_THAT(GrokProvider{"/given"}.watchPaths(), ElementsAre("/given/sessions"));
    EXPECT_EQ(GrokRateLimitCapture::hookURL("/given"), "/given/hooks/quorvane-rate-limit-capture.json");
    EXPECT_EQ(GrokRateLimitCapture::defaultLogURL("/given"), "/given/logs/unified.jsonl");
}

TEST(GrokHome, aReaderKeepsTheHomeThatItBeganWith) {
    const GrokScratchHome home;
    const GrokProvider provider;
    home.setGrokHome("/srv/grok");
    EXPECT_EQ(provider.sessionsRoot(), home.path(".grok/sessions"));
}

TEST(GrokHome, programInTheAgentsHomeIsDetected) {
    const GrokScratchHome home;
    home.makeFolder("agent/bin");
    EXPECT_FALSE(GrokHome::isDetected(home.path("agent")));
    home.write("agent/bin/grok", "#!/bin/sh\n");
    EXPECT_FALSE(GrokHome::isDetected(home.path("agent"))) << "it cannot be executed";
    home.makeProgram("agent/bin/grok");
    EXPECT_TRUE(GrokHome::isDetected(home.path("agent")));
    EXPECT_TRUE(GrokProvider::isGrokBuildDetected(home.path("agent")));
    home.setGrokHome(home.path("agent"));
    EXPECT_TRUE(GrokHome::isDetected());
}

TEST(GrokHome, folderOfTheProgramsNameIsNoProgram) {
    const GrokScratchHome home;
    home.makeFolder("agent/bin/grok");
    EXPECT_FALSE(GrokHome::isDetected(home.path("agent")));
}

TEST(GrokHome, usualFoldersOfProgramsCountOnlyWithoutAGivenHome) {
    const GrokScratchHome home;
    // What this machine itself has cannot be taken away.
    const bool isOnThisMachine =
        FileStatus::isExecutableFile("/opt/homebrew/bin/grok") || FileStatus::isExecutableFile("/usr/local/bin/grok");
    EXPECT_EQ(GrokHome::isDetected(), isOnThisMachine);
    home.makeProgram(".local/bin/grok");
    EXPECT_TRUE(GrokHome::isDetected());
    EXPECT_FALSE(GrokHome::isDetected(home.path(".grok")));
    home.setGrokHome(home.path("other"));
    EXPECT_TRUE(GrokHome::isDetected()) << "a home of the environment is not a given one";
}

TEST(GrokHome, sessionLogsAreDetected) {
    const GrokScratchHome home;
    home.makeFolder("agent/sessions/p/s");
    EXPECT_FALSE(GrokHome::isDetected(home.path("agent")));
    home.write("agent/sessions/p/s/updates.jsonl", "");
    EXPECT_TRUE(GrokHome::isDetected(home.path("agent")));
    EXPECT_TRUE(GrokHome::hasSessionLogs(home.path("agent")));
}

TEST(GrokHome, sessionLogsAreFilesOfOneNameInOrder) {
    const GrokScratchHome home;
    for (const char* file : {"b/s/updates.jsonl", "a/t/updates.jsonl", "a/s/updates.jsonl", "updates.jsonl",
                             "a/s/deep/updates.jsonl", "%2Fx/s/updates.jsonl", "B/s/updates.jsonl"})
        home.write("agent/sessions/" + std::string{file}, "");
    for (const char* other : {"a/s/old-updates.jsonl", "a/s/updates.jsonl.bak", "a/s/Updates.jsonl", "a/s/updates.json",
                              "a/s/.updates.jsonl", "a/.s/updates.jsonl", ".p/s/updates.jsonl", "a/s/chat.jsonl"})
        home.write("agent/sessions/" + std::string{other}, "");
    home.write("agent/updates.jsonl", "");
    std::vector<std::string> expected;
    for (const char* file : {"%2Fx/s/updates.jsonl", "B/s/updates.jsonl", "a/s/deep/updates.jsonl", "a/s/updates.jsonl",
                             "a/t/updates.jsonl", "b/s/updates.jsonl", "updates.jsonl"})
        expected.push_back(home.path("agent/sessions/" + std::string{file}));
    EXPECT_EQ(GrokHome::updatesFiles(home.path("agent")), expected);
}

TEST(GrokHome, withoutTheFolderThereAreNoSessionLogs) {
    const GrokScratchHome home;
    EXPECT_TRUE(GrokHome::updatesFiles(home.path("agent")).empty());
    EXPECT_FALSE(GrokHome::hasSessionLogs(home.path("agent")));
    home.write("agent/sessions", "a file");
    EXPECT_TRUE(GrokHome::updatesFiles(home.path("agent")).empty());
    EXPECT_FALSE(GrokHome::hasSessionLogs(home.path("agent")));
}

}  // namespace
}  // namespace quorvane::testing
