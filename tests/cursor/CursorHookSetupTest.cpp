#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/JSONDocument.h"
#include "QuorvaneCore/ratelimits/CursorHookSetup.h"
#include "tests/cursor/CursorTestSupport.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using State = CursorHookSetup::State;
using Kind = CursorHookSetup::SetupError::Kind;

constexpr std::string_view hooks = CursorScratchHome::hooksFile;
constexpr std::string_view script = CursorScratchHome::scriptFile;
constexpr std::string_view capture = CursorScratchHome::captureFile;

State stateNow() {
    return CursorHookSetup::state(std::nullopt, std::nullopt, true);
}

/// What `install` says of it; absent if it has nothing to say.
std::optional<Kind> installFailure(std::optional<bool> detected = true) {
    try {
        CursorHookSetup::install(std::nullopt, std::nullopt, detected);
        return std::nullopt;
    } catch (const CursorHookSetup::SetupError& error) {
        return error.kind();
    }
}

/// The path in the message of the file error that `action` ends with; empty if it ends well.
std::string failedPath(const std::function<void()>& action) {
    try {
        action();
        return {};
    } catch (const std::system_error& error) {
        return error.what();
    }
}

/// The entry that belongs to the scratch home, on one line.
std::string entry() {
    return R"({"command": "/bin/sh ')" + CursorHookSetup::scriptURL() + R"('", "failClosed": false, "timeout": 2})";
}

/// The same JSON in one form, whatever its layout and order of keys.
std::string form(const std::string& json) {
    const std::optional<JSONDocument> document = JSONDocument::parse(json);
    return document ? document->pretty(JSONDocument::KeyOrder::Sorted) : "no JSON";
}

std::uint32_t mode(const std::string& path) {
    return FileStatus::of(path).value().mode & 07777U;
}

std::uint64_t inode(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_ino;
}

// Where things lie

TEST(CursorHookSetupPaths, areUnderTheHomeDirectoryUnlessGiven) {
    const CursorScratchHome home;
    EXPECT_EQ(CursorHookSetup::cursorHome(), home.path(".cursor"));
    EXPECT_EQ(CursorHookSetup::hooksURL(), home.path(".cursor/hooks.json"));
    EXPECT_EQ(CursorHookSetup::appSupportDirectory(), home.path("Library/Application Support/Quorvane"));
    EXPECT_EQ(CursorHookSetup::scriptURL(), home.path(script));
    EXPECT_EQ(CursorHookSetup::captureURL(), home.path(capture));
    EXPECT_EQ(CursorHookSetup::cursorHome("/h"), "/h/.cursor");
    EXPECT_EQ(CursorHookSetup::hooksURL("/c"), "/c/hooks.json");
    EXPECT_EQ(CursorHookSetup::appSupportDirectory("/h"), "/h/Library/Application Support/Quorvane");
    EXPECT_EQ(CursorHookSetup::scriptURL("/a"), "/a/cursor-usage-capture.sh");
    EXPECT_EQ(CursorHookSetup::captureURL("/a"), "/a/cursor-usage.jsonl");
    EXPECT_FALSE(home.exists(".cursor"));
    EXPECT_FALSE(home.exists("Library"));
}

TEST(CursorHookSetupTexts, areAsInstalledHooksHaveThem) {
    EXPECT_EQ(CursorHookSetup::hookCommand("/srv/it's data"),
              R"(/bin/sh '/srv/it'"'"'s data/cursor-usage-capture.sh')");
    std::ifstream file{QUORVANE_TEST_DATA "/cursor/cursor-usage-capture.sh"};
    const std::string expected{std::istreambuf_iterator<char>{file}, {}};
    EXPECT_EQ(CursorHookSetup::captureScript("/srv/it's data/Quorvane/cursor-usage.jsonl"), expected);
    EXPECT_THAT(expected, HasSubstr(CursorHookSetup::scriptMarker));
    EXPECT_THAT(expected, HasSubstr(CursorHookSetup::scriptRevisionMarker));
}

TEST(CursorHookSetupTexts, placesInAPathAreNotFilledIn) {
    EXPECT_THAT(CursorHookSetup::captureScript("/{out}/{dir}/f"), HasSubstr("/bin/mkdir -p '/{out}/{dir}' 2>"));
}

TEST(CursorHookSetupError, isNamedAfterItsKind) {
    EXPECT_STREQ(CursorHookSetup::SetupError{Kind::CursorNotDetected}.what(), "cursorNotDetected");
    EXPECT_STREQ(CursorHookSetup::SetupError{Kind::MalformedHooks}.what(), "malformedHooks");
    EXPECT_STREQ(CursorHookSetup::SetupError{Kind::NoAppSupport}.what(), "noAppSupport");
}

// The agent

TEST(CursorDetection, looksForEitherCommand) {
    const CursorScratchHome home;
    const std::array<std::string, 3> folders{home.path("none"), home.path("one"), home.path("two")};
    home.write("one/cursor.txt", "");
    home.makeFolder("one/cursor");
    home.write("two/cursor-agent", "");
    EXPECT_FALSE(CursorHookSetup::isCursorCLIDetected(folders)) << "a folder, and a file that cannot be executed";
    std::filesystem::permissions(home.path("two/cursor-agent"), std::filesystem::perms::owner_all);
    EXPECT_TRUE(CursorHookSetup::isCursorCLIDetected(folders));
    home.remove("two/cursor-agent");
    home.write("two/cursor", "");
    std::filesystem::permissions(home.path("two/cursor"), std::filesystem::perms::owner_all);
    EXPECT_TRUE(CursorHookSetup::isCursorCLIDetected(folders));
    EXPECT_FALSE(CursorHookSetup::isCursorCLIDetected({}));
}

TEST(CursorDetection, findsTheCommandInThePath) {
    const CursorScratchHome home;
    const ScopedVariables variables{"PATH"};
    variables.set("PATH", home.path("bin"));
    home.write("bin/cursor-agent", "");
    std::filesystem::permissions(home.path("bin/cursor-agent"), std::filesystem::perms::owner_all);
    EXPECT_EQ(CursorHookSetup::state(), State::Installable);
    CursorHookSetup::install();
    EXPECT_EQ(CursorHookSetup::state(), State::Active);
}

TEST(CursorDetection, withoutTheAgentNothingIsInstalled) {
    const CursorScratchHome home;
    EXPECT_EQ(CursorHookSetup::state(std::nullopt, std::nullopt, false), State::Unavailable);
    EXPECT_EQ(installFailure(false), Kind::CursorNotDetected);
    EXPECT_FALSE(home.exists(".cursor"));
    EXPECT_FALSE(home.exists("Library"));
    home.install();
    EXPECT_EQ(CursorHookSetup::state(std::nullopt, std::nullopt, false), State::Unavailable);
}

TEST(CursorDetection, tellsWhetherTheScriptsReaderIsThere) {
    EXPECT_EQ(CursorHookSetup::isFieldReaderInstalled(), std::filesystem::exists(CursorHookSetup::fieldReader));
    EXPECT_THAT(CursorHookSetup::captureScript("/f"),
                HasSubstr("| " + std::string{CursorHookSetup::fieldReader} + " "));
}

// Installing

TEST(CursorHookInstall, makesTheHooksFileAndTheScript) {
    const CursorScratchHome home;
    EXPECT_EQ(stateNow(), State::Installable);
    EXPECT_FALSE(home.exists(".cursor"));
    home.install();
    EXPECT_EQ(stateNow(), State::Active);
    EXPECT_EQ(home.read(hooks), R"({
  "hooks": {
    "stop": [
      {
        "command": "/bin/sh ')" + home.path(script) +
                                    R"('",
        "failClosed": false,
        "timeout": 2
      }
    ]
  },
  "version": 1
})");
    EXPECT_EQ(home.read(script), CursorHookSetup::captureScript(home.path(capture)));
    EXPECT_EQ(mode(home.path(script)), 0700U);
    EXPECT_EQ(mode(home.path(CursorScratchHome::folder)), 0700U);
    EXPECT_FALSE(home.exists(capture));
}

TEST(CursorHookInstall, usesTheFoldersThatItIsGiven) {
    const CursorScratchHome home;
    const std::string agent = home.path("agent/.cursor");
    const std::string support = home.path("support");
    CursorHookSetup::install(agent, support, true);
    EXPECT_EQ(CursorHookSetup::state(agent, support, true), State::Active);
    EXPECT_EQ(CursorHookSetup::state(agent, std::nullopt, true), State::Installable);
    EXPECT_EQ(CursorHookSetup::state(std::nullopt, support, true), State::Installable);
    EXPECT_THAT(home.read("agent/.cursor/hooks.json"), HasSubstr("/support/cursor-usage-capture.sh"));
    EXPECT_FALSE(home.exists(".cursor"));
    EXPECT_FALSE(home.exists("Library"));
    home.write("support/cursor-usage.jsonl", "x");
    CursorHookSetup::uninstall(agent, support);
    EXPECT_TRUE(std::filesystem::is_empty(support));
}

TEST(CursorHookInstall, aSecondTimeLeavesTheHooksFileUntouched) {
    const CursorScratchHome home;
    home.write(hooks, "{\"hooks\": {\"stop\": [ " + entry() + " ]}}\n\n");
    const std::string before = home.read(hooks);
    const std::uint64_t file = inode(home.path(hooks));
    EXPECT_EQ(stateNow(), State::Installable) << "the script is gone";
    home.install();
    EXPECT_EQ(stateNow(), State::Active);
    EXPECT_EQ(home.read(hooks), before) << "not even a version is added";
    EXPECT_EQ(inode(home.path(hooks)), file);
    EXPECT_EQ(home.read(script), CursorHookSetup::captureScript(home.path(capture)));
}

TEST(CursorHookInstall, bringsTheScriptToItsTextAndMode) {
    const CursorScratchHome home;
    home.write(script, "something else");
    std::filesystem::permissions(home.path(script), std::filesystem::perms{0644});
    home.install();
    EXPECT_EQ(home.read(script), CursorHookSetup::captureScript(home.path(capture)));
    EXPECT_EQ(mode(home.path(script)), 0700U);
}

TEST(CursorHookInstall, keepsLinkAndModeOfTheHooksFile) {
    const CursorScratchHome home;
    const std::string real = home.write("dotfiles/hooks.json", "{}");
    std::filesystem::permissions(real, std::filesystem::perms{0640});
    home.makeFolder(".cursor");
    std::filesystem::create_symlink(real, home.path(hooks));
    home.install();
    EXPECT_TRUE(std::filesystem::is_symlink(home.path(hooks)));
    EXPECT_EQ(mode(real), 0640U);
    EXPECT_EQ(stateNow(), State::Active);
}

/// What install makes of a file. "ENTRY" stands for the hook's entry; layout and order of keys do not count.
struct InstallCase {
    const char* name;
    std::string before;
    std::string after;
};
class CursorHookInstallInto : public ::testing::TestWithParam<InstallCase> {};

std::string withEntry(std::string json) {
    for (std::size_t at = 0; (at = json.find("ENTRY", at)) != std::string::npos;)
        json.replace(at, 5, entry());
    return json;
}

TEST_P(CursorHookInstallInto, changesNothingElse) {
    const CursorScratchHome home;
    home.write(hooks, GetParam().before);
    EXPECT_EQ(stateNow(), State::Installable);
    home.install();
    EXPECT_EQ(home.read(hooks), form(withEntry(GetParam().after)));
    EXPECT_EQ(stateNow(), State::Active);
    home.install();
    EXPECT_EQ(home.read(hooks), form(withEntry(GetParam().after)));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, CursorHookInstallInto,
    ::testing::Values(
        InstallCase{"emptyObject", "{}", R"({"version":1,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"emptyHooks", R"({"version":1,"hooks":{}})", R"({"version":1,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"emptyStop", R"({"version":1,"hooks":{"stop":[]}})", R"({"version":1,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"newerVersion", R"({"version":2})", R"({"version":2,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"versionAsText", R"({"version":"1"})", R"({"version":"1","hooks":{"stop":[ENTRY]}})"},
        InstallCase{"versionNull", R"({"version":null})", R"({"version":null,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"stopIsAnObject", R"({"hooks":{"stop":{"command":"x"}}})",
                    R"({"version":1,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"stopIsNull", R"({"hooks":{"stop":null}})", R"({"version":1,"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"otherHooksStayInTheirOrder",
                    R"({"version":1,"hooks":{"stop":[{"command":"b"},{"command":"a","timeout":9}],)"
                    R"("afterFileEdit":[{"command":"z"},{"command":"y"}],"beforeReadFile":"odd"}})",
                    R"({"version":1,"hooks":{"stop":[{"command":"b"},{"command":"a","timeout":9},ENTRY],)"
                    R"("afterFileEdit":[{"command":"z"},{"command":"y"}],"beforeReadFile":"odd"}})"},
        InstallCase{"oddEntriesOfStop", R"({"version":1,"hooks":{"stop":[1,"x",null,[{"a":2}],{"command":7}]}})",
                    R"({"version":1,"hooks":{"stop":[1,"x",null,[{"a":2}],{"command":7},ENTRY]}})"},
        InstallCase{"unknownKeys", R"({"$schema":"s","version":1,"mine":{"deep":[[],{}]},"hooks":{}})",
                    R"({"$schema":"s","version":1,"mine":{"deep":[[],{}]},"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"numbersKeepTheirText",
                    R"({"version":1.0,"n":[12345678901234567890123,1.50,-0,1e5,0.1000000000000000055],"hooks":{}})",
                    R"({"version":1.0,"n":[12345678901234567890123,1.50,-0,1e5,0.1000000000000000055],)"
                    R"("hooks":{"stop":[ENTRY]}})"},
        InstallCase{"textsKeepTheirEscapes", R"({"version":1,"a\u00e9\/":"\ud83d\ude00\ud800 é","hooks":{}})",
                    R"({"version":1,"a\u00e9\/":"\ud83d\ude00\ud800 é","hooks":{"stop":[ENTRY]}})"},
        // The agent's own parser takes the last of two.
        InstallCase{"doubledKeys", R"({"version":1,"hooks":{"stop":[{"command":"old"}]},"hooks":{"stop":[]}})",
                    R"({"version":1,"hooks":{"stop":[{"command":"old"}]},"hooks":{"stop":[ENTRY]}})"},
        InstallCase{"escapedKey", R"({"version":1,"h\u006foks":{"stop":[]}})",
                    R"({"version":1,"h\u006foks":{"stop":[ENTRY]}})"},
        InstallCase{
            "theCommandOfAnotherFolder",
            R"({"version":1,"hooks":{"stop":[{"command":"/bin/sh '/other/cursor-usage-capture.sh'"}]}})",
            R"({"version":1,"hooks":{"stop":[{"command":"/bin/sh '/other/cursor-usage-capture.sh'"},ENTRY]}})"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CursorHookInstall, keysAreWrittenInOrder) {
    const CursorScratchHome home;
    home.write(hooks, R"({"z":{"y":1,"x":[]},"hooks":{},"a":2})");
    home.install();
    EXPECT_THAT(home.read(hooks), StartsWith("{\n  \"a\": 2,\n  \"hooks\": {\n    \"stop\": [\n"));
    EXPECT_THAT(home.read(hooks), EndsWith("  \"version\": 1,\n  \"z\": {\n    \"x\": [],\n    \"y\": 1\n  }\n}"));
}

/// The hook was registered by hand, in whatever order and with whatever else.
TEST(CursorHookInstall, theCommandAloneMakesTheHook) {
    const CursorScratchHome home;
    home.write(hooks, R"({"hooks":{"stop":[7,{"timeout":60,"command":"\/bin\/sh ')" + home.path(script) + R"('"}]}})");
    home.write(script, CursorHookSetup::captureScript(home.path(capture)));
    EXPECT_EQ(stateNow(), State::Active);
}

// Hooks' files that are none

struct BrokenCase {
    const char* name;
    std::string content;
};
class CursorHooksBroken : public ::testing::TestWithParam<BrokenCase> {};

TEST_P(CursorHooksBroken, areReportedByInstallAndLeftAlone) {
    const CursorScratchHome home;
    home.write(hooks, GetParam().content);
    EXPECT_EQ(stateNow(), State::Installable);
    EXPECT_EQ(installFailure(), Kind::MalformedHooks);
    EXPECT_FALSE(home.exists("Library")) << "nothing is written";

    home.write(script, CursorHookSetup::captureScript(home.path(capture)));
    home.write(capture, captureLine("g", 1));
    CursorHookSetup::uninstall();
    EXPECT_EQ(home.read(hooks), GetParam().content);
    EXPECT_FALSE(home.exists(script));
    EXPECT_FALSE(home.exists(capture));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, CursorHooksBroken,
    ::testing::Values(BrokenCase{"array", "[]"}, BrokenCase{"arrayWithAnObject", R"([{"hooks":{}}])"},
                      BrokenCase{"text", R"("hooks")"}, BrokenCase{"number", "1"}, BrokenCase{"null", "null"},
                      BrokenCase{"empty", ""}, BrokenCase{"blank", "\n"}, BrokenCase{"tornObject", R"({"hooks":{})"},
                      BrokenCase{"comment", "{} // mine"}, BrokenCase{"trailingComma", R"({"hooks":{},})"},
                      BrokenCase{"noUTF8", "{\"hooks\":{},\"a\":\"\xff\"}"},
                      BrokenCase{"hooksIsAnArray", R"({"hooks":[]})"}, BrokenCase{"hooksIsNull", R"({"hooks":null})"},
                      BrokenCase{"hooksIsAText", R"({"hooks":"stop"})"},
                      BrokenCase{"theLastHooksIsNoObject", R"({"hooks":{},"hooks":1})"},
                      BrokenCase{"tooDeep", "{\"a\":" + std::string(2000, '[') + std::string(2000, ']') + "}"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CursorHooksBrokenFile, aFolderInItsPlaceIsReported) {
    const CursorScratchHome home;
    home.makeFolder(hooks);
    EXPECT_EQ(stateNow(), State::Installable);
    EXPECT_EQ(installFailure(), Kind::MalformedHooks);
    EXPECT_FALSE(home.exists("Library"));
    CursorHookSetup::uninstall();
    EXPECT_TRUE(home.exists(hooks));
}

// The state of the script

TEST(CursorHookScript, mustBeTheSystemsOwn) {
    const CursorScratchHome home;
    home.install();
    home.write(script, "#!/bin/sh\nexit 0\n");
    EXPECT_EQ(stateNow(), State::Installable);
    home.write(script, std::string{CursorHookSetup::scriptMarker} + "\n\xff");
    EXPECT_EQ(stateNow(), State::Installable) << "no UTF-8";
    home.remove(script);
    home.makeFolder(script);
    EXPECT_EQ(stateNow(), State::Installable);
    home.remove(script);
    EXPECT_EQ(stateNow(), State::Installable);
}

const std::string older = std::string{CursorHookSetup::scriptMarker} + "\n# QUORVANE-CURSOR-CAPTURE-REV 1\nexit 0\n";

TEST(CursorHookScript, anOlderOneIsReplacedOncePerProcessAndFolder) {
    const CursorScratchHome home;
    home.install();
    const std::string before = home.read(hooks);
    home.write(script, older);
    std::filesystem::permissions(home.path(script), std::filesystem::perms{0600});
    EXPECT_EQ(stateNow(), State::Active);
    EXPECT_EQ(home.read(script), CursorHookSetup::captureScript(home.path(capture)));
    EXPECT_EQ(mode(home.path(script)), 0700U);
    EXPECT_EQ(home.read(hooks), before);

    home.write(script, older);
    EXPECT_EQ(stateNow(), State::Active);
    EXPECT_EQ(home.read(script), older) << "not a second time";
    const std::string sameFolder = home.path(CursorScratchHome::folder) + "/./";
    CursorHookSetup::install(home.path("other/.cursor"), sameFolder, true);
    home.write(script, older);
    EXPECT_EQ(CursorHookSetup::state(home.path("other/.cursor"), sameFolder, true), State::Active);
    EXPECT_EQ(home.read(script), older) << "nor under another name";

    CursorHookSetup::install(std::nullopt, home.path("elsewhere"), true);
    home.write("elsewhere/cursor-usage-capture.sh", older);
    EXPECT_EQ(CursorHookSetup::state(std::nullopt, home.path("elsewhere"), true), State::Active);
    EXPECT_THAT(home.read("elsewhere/cursor-usage-capture.sh"), HasSubstr(CursorHookSetup::scriptRevisionMarker));
}

TEST(CursorHookScript, anOlderOneThatCannotBeReplacedGoesOnWorking) {
    const CursorScratchHome home;
    home.install();
    home.writeIrreplaceable(script, older);
    EXPECT_EQ(stateNow(), State::Active);
    EXPECT_EQ(home.read(script), older);
}

// Failing writes

TEST(CursorHookInstallFailure, aFileInPlaceOfTheFolderIsReported) {
    const CursorScratchHome home;
    home.write("Library", "");
    EXPECT_THAT(failedPath([&] { home.install(); }), HasSubstr(home.path("Library/Application Support")));
    EXPECT_FALSE(home.exists(".cursor"));
}

TEST(CursorHookInstallFailure, aScriptThatCannotBeWrittenLeavesTheHooksFile) {
    const CursorScratchHome home;
    home.write(hooks, "{}");
    home.makeFolder(std::string{script} + "/inside");
    EXPECT_THAT(failedPath([&] { home.install(); }), HasSubstr(home.path(script)));
    EXPECT_EQ(home.read(hooks), "{}");
}

TEST(CursorHookInstallFailure, aHooksFileThatCannotBeWrittenStaysAsItWas) {
    const CursorScratchHome home;
    const std::string target = home.writeIrreplaceable(hooks, "{}");
    EXPECT_THAT(failedPath([&] { home.install(); }), HasSubstr(target));
    EXPECT_EQ(home.read(hooks), "{}");
    EXPECT_TRUE(home.exists(script)) << "which does no harm without the hook";
}

TEST(CursorHookInstallFailure, aFileInPlaceOfTheAgentsFolderIsReported) {
    const CursorScratchHome home;
    home.write(".cursor", "");
    EXPECT_THAT(failedPath([&] { home.install(); }), HasSubstr(home.path(".cursor")));
}

// Uninstalling

TEST(CursorHookUninstall, removesHookScriptAndData) {
    const CursorScratchHome home;
    home.install();
    home.write(capture, captureLine("g", 1));
    CursorHookSetup::uninstall();
    EXPECT_EQ(home.read(hooks), "{\n  \"hooks\": {},\n  \"version\": 1\n}");
    EXPECT_FALSE(home.exists(script));
    EXPECT_FALSE(home.exists(capture));
    EXPECT_EQ(stateNow(), State::Installable);
}

TEST(CursorHookUninstall, isAtEaseWithNothingThere) {
    const CursorScratchHome home;
    CursorHookSetup::uninstall();
    EXPECT_FALSE(home.exists(".cursor"));
    EXPECT_FALSE(home.exists("Library"));
}

class CursorHookUninstallFrom : public ::testing::TestWithParam<InstallCase> {};

TEST_P(CursorHookUninstallFrom, changesNothingElse) {
    const CursorScratchHome home;
    home.write(hooks, withEntry(GetParam().before));
    CursorHookSetup::uninstall();
    EXPECT_EQ(home.read(hooks), form(withEntry(GetParam().after)));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, CursorHookUninstallFrom,
    ::testing::Values(
        InstallCase{"theOnlyHook", R"({"version":1,"hooks":{"stop":[ENTRY]}})", R"({"version":1,"hooks":{}})"},
        InstallCase{"withoutHooks", R"({"mine":1.0})", R"({"mine":1.0,"hooks":{}})"},
        InstallCase{"emptyStop", R"({"hooks":{"stop":[]}})", R"({"hooks":{}})"},
        InstallCase{"severalTimes", R"({"hooks":{"stop":[ENTRY,{"command":"b"},ENTRY,{"command":"a"},ENTRY]}})",
                    R"({"hooks":{"stop":[{"command":"b"},{"command":"a"}]}})"},
        InstallCase{"oddEntries", R"({"hooks":{"stop":[1,ENTRY,"x",[ENTRY],{"command":7},null,{}]}})",
                    R"({"hooks":{"stop":[1,"x",[ENTRY],{"command":7},null,{}]}})"},
        InstallCase{"stopIsNoArray", R"({"version":2,"hooks":{"stop":ENTRY}})",
                    R"({"version":2,"hooks":{"stop":ENTRY}})"},
        InstallCase{"sameCommandInAnotherList", R"({"hooks":{"sessionStart":[ENTRY],"stop":[ENTRY]}})",
                    R"({"hooks":{"sessionStart":[ENTRY]}})"}),
    [](const auto& row) { return std::string{row.param.name}; });

/// Taking out gives back the values of the file that it was put into.
class CursorHookRoundTrip : public ::testing::TestWithParam<BrokenCase> {};

TEST_P(CursorHookRoundTrip, givesBackWhatWasThere) {
    const CursorScratchHome home;
    home.write(hooks, GetParam().content);
    home.install();
    EXPECT_NE(form(home.read(hooks)), form(GetParam().content));
    CursorHookSetup::uninstall();
    EXPECT_EQ(form(home.read(hooks)), form(GetParam().content));
}

INSTANTIATE_TEST_SUITE_P(
    Files, CursorHookRoundTrip,
    ::testing::Values(BrokenCase{"fresh", R"({"version":1,"hooks":{}})"},
                      BrokenCase{"otherStopHooks", R"({"version":3,"hooks":{"stop":[{"command":"a","x":1.10}, 5]}})"},
                      BrokenCase{
                          "muchElse",
                          R"({"version":1,"z":{"b":-0.0,"a":[1E+2]},"hooks":{"q":[{"command":"\u0061"}]},"é":""})"}),
    [](const auto& row) { return std::string{row.param.name}; });

TEST(CursorHookUninstallFailure, aHooksFileThatCannotBeWrittenEndsIt) {
    const CursorScratchHome home;
    home.install();
    home.write(capture, "x");
    const std::string before = home.read(hooks);
    const std::string target = home.writeIrreplaceable(hooks, before);
    EXPECT_THAT(failedPath([] { CursorHookSetup::uninstall(); }), HasSubstr(target));
    EXPECT_EQ(home.read(hooks), before);
    EXPECT_TRUE(home.exists(script));
    EXPECT_TRUE(home.exists(capture));
}

TEST(CursorHookUninstallFailure, aScriptThatCannotBeRemovedEndsIt) {
    const CursorScratchHome home;
    home.makeFolder(script);
    home.write(capture, "x");
    EXPECT_THAT(failedPath([] { CursorHookSetup::uninstall(); }), HasSubstr("cursor-usage-capture.sh"));
    EXPECT_TRUE(home.exists(capture));
}

TEST(CursorHookUninstallFailure, dataThatCannotBeRemovedIsReported) {
    const CursorScratchHome home;
    home.install();
    home.makeFolder(capture);
    EXPECT_THAT(failedPath([] { CursorHookSetup::uninstall(); }), HasSubstr("cursor-usage.jsonl"));
    EXPECT_FALSE(home.exists(script));
    EXPECT_THAT(home.read(hooks), Not(HasSubstr("stop")));
}

TEST(CursorHookUninstall, aFileInPlaceOfTheFolderIsNoHindrance) {
    const CursorScratchHome home;
    home.write("Library", "");
    CursorHookSetup::uninstall();
    EXPECT_TRUE(home.exists("Library"));
}

}  // namespace
}  // namespace quorvane::testing
