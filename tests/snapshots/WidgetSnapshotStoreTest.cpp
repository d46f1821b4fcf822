#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/snapshots/SnapshotCodingError.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStoreError.h"
#include "tests/snapshots/SampleWidgetSnapshot.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;
using testing::sampleWidgetSnapshot;

constexpr std::string_view sampleText = R"({
  "availabilityNotice": "Grok — no data",
  "basis": "realAndNotionalListPrice",
  "currencyCode": "USD",
  "errorMessage": "could not read \"Codex\"",
  "generatedAt": "2026-01-01T12:00:00Z",
  "metric": "dollars",
  "providers": [
    {
      "basis": "realSpend",
      "currencyCode": "USD",
      "id": "claude",
      "metric": "dollars",
      "name": "Claude Code",
      "series": [
        1,
        2.5,
        50
      ],
      "tintHex": "#D97757",
      "today": 50.001,
      "usageOfficial": true,
      "usedPercent": 50,
      "weeklyUsedPercent": 20,
      "window": 300.25
    },
    {
      "basis": "notionalListPrice",
      "currencyCode": "EUR",
      "id": "copilot",
      "metric": "tokens",
      "name": "GitHub Copilot",
      "series": [],
      "tintHex": "000000",
      "today": 1200,
      "usageOfficial": false,
      "window": 56000
    }
  ],
  "schemaVersion": 4,
  "series": [
    1.5,
    3,
    51.5
  ],
  "staleAfter": "2026-01-01T13:00:00Z",
  "title": "All agents",
  "totalToday": 51.5,
  "totalWindow": 310.75,
  "windowDays": 30,
  "windows": {
    "30": {
      "days": 30,
      "providerWindows": {
        "claude": {
          "series": [
            1,
            2.5,
            50
          ],
          "window": 300.25
        },
        "copilot": {
          "series": [],
          "window": 56000
        }
      },
      "series": [
        1.5,
        3,
        51.5
      ],
      "totalWindow": 310.75
    },
    "7": {
      "days": 7,
      "providerWindows": {
        "claude": {
          "series": [
            9.75,
            60.5
          ],
          "window": 70.25
        }
      },
      "series": [
        10,
        60.5
      ],
      "totalWindow": 70.5
    }
  }
})";

class WidgetSnapshotStoreTest : public ::testing::Test {
protected:
    /// The sample's members, to be changed and put into the file.
    static JSONTree::Object sampleMembers() {
        return std::get<JSONTree::Object>(JSONParser::parseTree(sampleText)->content);
    }
    void put(const JSONTree& tree) const { putText(JSONWriter::compact(tree)); }
    void putText(std::string_view text) const { home.write(store.snapshotURL(), text); }

    /// The message of the coding error that reading the file meets.
    [[nodiscard]] std::string codingError() const {
        EXPECT_EQ(store.readIfAvailable(), std::nullopt);
        try {
            static_cast<void>(store.read());
        } catch (const SnapshotCodingError& error) {
            return error.what();
        }
        return "read well";
    }

    testing::ScratchHome home;
    WidgetSnapshotStore store{home.path("shared/Widget")};
};

TEST_F(WidgetSnapshotStoreTest, writesOnePrettyObjectWithSortedKeys) {
    store.write(sampleWidgetSnapshot());
    EXPECT_EQ(home.read(store.snapshotURL()), sampleText);
}

TEST_F(WidgetSnapshotStoreTest, whatIsWrittenReadsBack) {
    store.write(sampleWidgetSnapshot());
    EXPECT_EQ(store.read(), sampleWidgetSnapshot());
    EXPECT_EQ(store.readIfAvailable(), sampleWidgetSnapshot());
    const WidgetSnapshot empty{};
    store.write(empty);
    EXPECT_EQ(store.read(), empty);
}

TEST_F(WidgetSnapshotStoreTest, anEmptySnapshotHasAllItsRequiredKeysAndNoOther) {
    store.write({});
    EXPECT_EQ(home.read(store.snapshotURL()), R"({
  "basis": "realSpend",
  "currencyCode": "",
  "generatedAt": "1970-01-01T00:00:00Z",
  "metric": "dollars",
  "providers": [],
  "schemaVersion": 4,
  "series": [],
  "staleAfter": "1970-01-01T00:00:00Z",
  "title": "",
  "totalToday": 0,
  "totalWindow": 0,
  "windowDays": 0,
  "windows": {}
})");
}

TEST_F(WidgetSnapshotStoreTest, fractionsOfSecondsAreNotKept) {
    WidgetSnapshot snapshot = sampleWidgetSnapshot();
    snapshot.generatedAt = Date{1767268800.75};
    store.write(snapshot);
    EXPECT_EQ(store.read(), sampleWidgetSnapshot());
}

TEST_F(WidgetSnapshotStoreTest, amountsAreKeptToTheLastDigit) {
    WidgetSnapshot snapshot;
    snapshot.series = {0.1 + 0.2, 1e-300, 1e300, -0.125, 9007199254740993.0, std::numeric_limits<double>::min()};
    store.write(snapshot);
    EXPECT_EQ(store.read().series, snapshot.series);
}

TEST_F(WidgetSnapshotStoreTest, absentValuesAreLeftOutAndReadAsAbsent) {
    JSONTree::Object members = sampleMembers();
    members.erase("errorMessage");
    members.erase("availabilityNotice");
    auto& row = std::get<JSONTree::Object>(std::get<JSONTree::Array>(members["providers"].content)[0].content);
    row.erase("usedPercent");
    row.erase("weeklyUsedPercent");
    put(JSONTree{members});
    const WidgetSnapshot snapshot = store.read();
    EXPECT_EQ(snapshot.errorMessage, std::nullopt);
    EXPECT_EQ(snapshot.availabilityNotice, std::nullopt);
    EXPECT_EQ(snapshot.providers[0].usedPercent, std::nullopt);
    EXPECT_EQ(snapshot.providers[0].weeklyUsedPercent, std::nullopt);
    store.write(snapshot);
    EXPECT_EQ(JSONParser::parseTree(home.read(store.snapshotURL())), JSONTree{members});
}

TEST_F(WidgetSnapshotStoreTest, nullIsAbsentWhereAbsenceIsAllowed) {
    JSONTree::Object members = sampleMembers();
    members["errorMessage"] = nullptr;
    put(JSONTree{members});
    EXPECT_EQ(store.read().errorMessage, std::nullopt);
}

TEST_F(WidgetSnapshotStoreTest, everyRequiredMemberIsMissed) {
    for (const auto& [key, value] : sampleMembers()) {
        if (key == "errorMessage" || key == "availabilityNotice") continue;
        JSONTree::Object members = sampleMembers();
        members.erase(key);
        put(JSONTree{members});
        EXPECT_NE(codingError().find("\"" + key + "\""), std::string::npos) << key;
    }
}

TEST_F(WidgetSnapshotStoreTest, everyMemberOfAWrongTypeIsRefused) {
    for (const auto& [key, value] : sampleMembers()) {
        for (const JSONTree& wrong : {JSONTree{true}, JSONTree{JSONTree::Array{nullptr}}}) {
            JSONTree::Object members = sampleMembers();
            members[key] = wrong;
            put(JSONTree{members});
            EXPECT_NE(codingError(), "read well") << key;
        }
    }
}

TEST_F(WidgetSnapshotStoreTest, everyRequiredMemberOfARowIsMissed) {
    const auto rowOf = [](JSONTree::Object& members) -> JSONTree::Object& {
        return std::get<JSONTree::Object>(std::get<JSONTree::Array>(members["providers"].content)[0].content);
    };
    JSONTree::Object sample = sampleMembers();
    for (const auto& [key, value] : rowOf(sample)) {
        JSONTree::Object members = sampleMembers();
        if (key != "usedPercent" && key != "weeklyUsedPercent") {
            rowOf(members).erase(key);
            put(JSONTree{members});
            EXPECT_NE(codingError().find("\"" + key + "\""), std::string::npos) << key;
        }
        rowOf(members)[key] = JSONTree{JSONTree::Object{}};
        put(JSONTree{members});
        EXPECT_NE(codingError().find("\"" + key + "\""), std::string::npos) << key;
    }
}

TEST_F(WidgetSnapshotStoreTest, everyMemberOfATimeframeIsMissed) {
    const auto windowOf = [](JSONTree::Object& members) -> JSONTree::Object& {
        return std::get<JSONTree::Object>(std::get<JSONTree::Object>(members["windows"].content)["7"].content);
    };
    const auto figuresOf = [&windowOf](JSONTree::Object& members) -> JSONTree::Object& {
        auto& rows = std::get<JSONTree::Object>(windowOf(members)["providerWindows"].content);
        return std::get<JSONTree::Object>(rows["claude"].content);
    };
    for (const char* key : {"days", "totalWindow", "series", "providerWindows"}) {
        JSONTree::Object members = sampleMembers();
        windowOf(members).erase(key);
        put(JSONTree{members});
        EXPECT_NE(codingError().find(key), std::string::npos) << key;
    }
    for (const char* key : {"window", "series"}) {
        JSONTree::Object members = sampleMembers();
        figuresOf(members).erase(key);
        put(JSONTree{members});
        EXPECT_NE(codingError().find(key), std::string::npos) << key;
    }
}

TEST_F(WidgetSnapshotStoreTest, noTimeframesAreAnEmptyObject) {
    JSONTree::Object members = sampleMembers();
    members["windows"] = JSONTree::Object{};
    put(JSONTree{members});
    const WidgetSnapshot snapshot = store.read();
    EXPECT_TRUE(snapshot.windows.empty());
    EXPECT_EQ(snapshot.selectingWindow(30), snapshot);
}

TEST_F(WidgetSnapshotStoreTest, aTimeframesKeyIsANumber) {
    for (const char* key : {"thirty", "", "7.0", "7 ", "99999999999999999999"}) {
        JSONTree::Object members = sampleMembers();
        auto& windows = std::get<JSONTree::Object>(members["windows"].content);
        windows[key] = windows["7"];
        put(JSONTree{members});
        EXPECT_NE(codingError().find("windows"), std::string::npos) << key;
    }
}

TEST_F(WidgetSnapshotStoreTest, numbersMayBeWrittenEitherWay) {
    JSONTree::Object members = sampleMembers();
    putText(JSONWriter::compact(JSONTree{members}));
    std::string text = home.read(store.snapshotURL());
    text.replace(text.find("\"schemaVersion\":4"), 17, "\"schemaVersion\":4.0");
    text.replace(text.find("\"totalToday\":51.5"), 17, "\"totalToday\":5150e-2");
    putText(text);
    EXPECT_EQ(store.read(), sampleWidgetSnapshot());
    text.replace(text.find("\"windowDays\":30"), 15, "\"windowDays\":30.5");
    putText(text);
    EXPECT_NE(codingError().find("windowDays"), std::string::npos);
    text.replace(text.find("\"windowDays\":30.5"), 17, "\"windowDays\":1e30");
    putText(text);
    EXPECT_NE(codingError().find("windowDays"), std::string::npos);
}

TEST_F(WidgetSnapshotStoreTest, otherKeysAreIgnored) {
    JSONTree::Object members = sampleMembers();
    members["newField"] = JSONTree{JSONTree::Object{{"a", JSONTree{1}}}};
    put(JSONTree{members});
    EXPECT_EQ(store.read(), sampleWidgetSnapshot());
}

TEST_F(WidgetSnapshotStoreTest, unknownWordsAreRefused) {
    for (const char* key : {"metric", "basis", "generatedAt", "staleAfter"}) {
        JSONTree::Object members = sampleMembers();
        members[key] = "Dollars";
        put(JSONTree{members});
        EXPECT_NE(codingError().find(key), std::string::npos) << key;
    }
    JSONTree::Object members = sampleMembers();
    members["generatedAt"] = "2026-01-01T12:00:00.000Z";
    put(JSONTree{members});
    EXPECT_NE(codingError().find("generatedAt"), std::string::npos);
}

TEST_F(WidgetSnapshotStoreTest, aDateMayNameAnotherZone) {
    JSONTree::Object members = sampleMembers();
    members["generatedAt"] = "2026-01-01T14:00:00+02:00";
    put(JSONTree{members});
    EXPECT_EQ(store.read(), sampleWidgetSnapshot());
}

TEST_F(WidgetSnapshotStoreTest, anotherVersionIsNamedByBothNumbers) {
    for (const std::int64_t version : {3, 5, 0, -1}) {
        JSONTree::Object members = sampleMembers();
        members["schemaVersion"] = version;
        put(JSONTree{members});
        EXPECT_EQ(store.readIfAvailable(), std::nullopt);
        try {
            static_cast<void>(store.read());
            ADD_FAILURE() << "version " << version << " was read";
        } catch (const WidgetSnapshotStoreError& error) {
            EXPECT_EQ(error.kind(), WidgetSnapshotStoreError::Kind::UnsupportedSchemaVersion);
            EXPECT_EQ(error.found(), version);
            EXPECT_EQ(error.expected(), 4);
            EXPECT_STRNE(error.what(), "");
        }
    }
}

TEST_F(WidgetSnapshotStoreTest, anotherVersionWithoutAKeyIsNoSnapshotAtAll) {
    JSONTree::Object members = sampleMembers();
    members["schemaVersion"] = 3;
    members.erase("windows");
    put(JSONTree{members});
    EXPECT_NE(codingError().find("windows"), std::string::npos);
}

TEST_F(WidgetSnapshotStoreTest, everyPartOfAFileIsRefused) {
    for (std::size_t length = 0; length < sampleText.size(); length += 13) {
        putText(sampleText.substr(0, length));
        EXPECT_NE(codingError(), "read well") << length;
    }
}

TEST_F(WidgetSnapshotStoreTest, whatIsNoObjectIsRefused) {
    for (const char* text : {"", "null", "[]", "4", "\"x\"", "{", "{}"}) {
        putText(text);
        EXPECT_NE(codingError(), "read well") << text;
    }
}

TEST_F(WidgetSnapshotStoreTest, aMissingFileIsTheSystemsOwnError) {
    EXPECT_EQ(store.readIfAvailable(), std::nullopt);
    try {
        static_cast<void>(store.read());
        ADD_FAILURE() << "there is no file";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_NE(std::string{error.what()}.find(store.snapshotURL()), std::string::npos);
    }
}

TEST_F(WidgetSnapshotStoreTest, aFolderInTheFilesPlaceIsTheSystemsOwnError) {
    home.makeFolder(store.snapshotURL());
    EXPECT_EQ(store.readIfAvailable(), std::nullopt);
    EXPECT_THROW(static_cast<void>(store.read()), std::system_error);
    EXPECT_THROW(store.write(sampleWidgetSnapshot()), std::system_error);
}

TEST_F(WidgetSnapshotStoreTest, aFileInTheFoldersPlaceIsTheSystemsOwnError) {
    home.write("shared/Widget", "in the way");
    EXPECT_THROW(store.write(sampleWidgetSnapshot()), std::system_error);
    EXPECT_EQ(home.read("shared/Widget"), "in the way");
}

TEST_F(WidgetSnapshotStoreTest, aNumberThatIsNotFiniteLeavesTheOldFile) {
    store.write(sampleWidgetSnapshot());
    const double infinite = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    WidgetSnapshot snapshot = sampleWidgetSnapshot();
    snapshot.totalToday = infinite;
    EXPECT_THROW(store.write(snapshot), SnapshotCodingError);
    snapshot = sampleWidgetSnapshot();
    snapshot.windows[7].providerWindows["claude"].series[1] = notANumber;
    EXPECT_THROW(store.write(snapshot), SnapshotCodingError);
    snapshot = sampleWidgetSnapshot();
    snapshot.providers[0].usedPercent = notANumber;
    EXPECT_THROW(store.write(snapshot), SnapshotCodingError);
    snapshot = sampleWidgetSnapshot();
    snapshot.staleAfter = Date{infinite};
    EXPECT_THROW(store.write(snapshot), SnapshotCodingError);
    EXPECT_EQ(home.read(store.snapshotURL()), sampleText);
}

TEST_F(WidgetSnapshotStoreTest, writingReplacesTheFileAndLeavesNothingElse) {
    putText("old");
    fs::create_hard_link(store.snapshotURL(), home.path("kept"));
    store.write(sampleWidgetSnapshot());
    EXPECT_EQ(home.read("kept"), "old");
    EXPECT_EQ(home.read(store.snapshotURL()), sampleText);
    EXPECT_EQ(std::distance(fs::directory_iterator{store.rootURL()}, fs::directory_iterator{}), 1);
}

TEST_F(WidgetSnapshotStoreTest, withoutASharedContainerTheFileLiesWithTheOthers) {
    const SharedContainerLookup none = [](std::string_view) { return std::nullopt; };
    const std::string expected = home.path("Library/Application Support/Quorvane/Widget");
    EXPECT_EQ(WidgetSnapshotStore::defaultRootURL(none), expected);
    EXPECT_FALSE(WidgetSnapshotStore::resolvedRootIsAppGroup(none));
    EXPECT_EQ(WidgetSnapshotStore::defaultRootURL(), expected);
    EXPECT_FALSE(WidgetSnapshotStore::resolvedRootIsAppGroup());
    EXPECT_EQ(WidgetSnapshotStore{}.snapshotURL(), expected + "/widget-snapshot.json");
    EXPECT_FALSE(home.exists("Library"));
}

TEST_F(WidgetSnapshotStoreTest, aSharedContainerHoldsTheFileInAFolderOfItsOwn) {
    std::string asked;
    const SharedContainerLookup containers = [&asked](std::string_view group) {
        asked = group;
        return std::optional<std::string>{"/containers/one"};
    };
    EXPECT_EQ(WidgetSnapshotStore::defaultRootURL(containers), "/containers/one/Widget");
    EXPECT_EQ(asked, "QZ7RT41KWM.com.orlanmere.quorvane");
    EXPECT_TRUE(WidgetSnapshotStore::resolvedRootIsAppGroup(containers));
}

TEST_F(WidgetSnapshotStoreTest, theSystemsFolderIsPrivateWhereItIsNew) {
    const WidgetSnapshotStore usual;
    usual.write(sampleWidgetSnapshot());
    EXPECT_EQ(usual.read(), sampleWidgetSnapshot());
    struct stat status {};
    ASSERT_EQ(::stat(home.path("Library/Application Support/Quorvane").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

}  // namespace
}  // namespace quorvane
