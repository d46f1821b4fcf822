#include "QuorvaneCore/ratelimits/CursorHookSetup.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "QuorvaneCore/model/ProviderExecutableDetection.h"
#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FileMode.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/FileStatus.h"
#include "QuorvaneCore/platform/FolderCreation.h"
#include "QuorvaneCore/platform/JSONDocument.h"
#include "QuorvaneCore/platform/UserFolders.h"

namespace quorvane {
namespace {

using SetupError = CursorHookSetup::SetupError;
using OptionalPath = std::optional<std::string>;

constexpr unsigned scriptMode = 0700;

std::mutex repairLock;  // guards `repairAttemptedPaths`; a leaf, never held while a file is written
std::set<std::string> repairAttemptedPaths;  // the folders in which this process has replaced an older script

bool isDetected(std::optional<bool> detected) {
    if (detected) return *detected;
    return CursorHookSetup::isCursorCLIDetected(
        ProviderExecutableDetection::defaultSearchDirectories(UserFolders::home()));
}

[[noreturn]] void failMalformed() {
    throw SetupError{SetupError::Kind::MalformedHooks};
}

JSONDocument emptyObject() {
    return JSONDocument::of(JSONTree::Object{});
}

/// The document of the hooks' file, whose "hooks" is an object if there is one at all.
JSONDocument readHooks(const std::string& path, bool allowMissing) {
    if (!FileStatus::of(path)) {
        if (!allowMissing) failMalformed();
        return JSONDocument::of(JSONTree::Object{{"version", 1}, {"hooks", JSONTree::Object{}}});
    }
    const std::optional<std::string> text = readFile(path);
    std::optional<JSONDocument> document = text ? JSONDocument::parse(*text) : std::nullopt;
    if (!document || document->object() == nullptr) failMalformed();
    const JSONDocument* hooks = document->member("hooks");
    if (hooks != nullptr && hooks->object() == nullptr) failMalformed();
    return *std::move(document);
}

void writeHooks(const JSONDocument& document, const std::string& path) {
    createFolders(FilePath::parent(path));
    replaceFile(path, document.pretty(JSONDocument::KeyOrder::Sorted));
}

bool isEntryOf(const JSONDocument& entry, std::string_view command) {
    const JSONDocument* own = entry.member("command");
    return own != nullptr && own->string() == command;
}

bool hasCommand(const JSONDocument& document, std::string_view command) {
    const JSONDocument* hooks = document.member("hooks");
    const JSONDocument* stop = hooks != nullptr ? hooks->member("stop") : nullptr;
    const JSONDocument::Array* entries = stop != nullptr ? stop->array() : nullptr;
    return entries != nullptr && std::any_of(entries->begin(), entries->end(),
                                             [&](const JSONDocument& entry) { return isEntryOf(entry, command); });
}

void addCommand(JSONDocument& document, std::string_view command) {
    if (document.member("hooks") == nullptr) document.set("hooks", emptyObject());
    JSONDocument& hooks = *document.member("hooks");
    const JSONDocument* old = hooks.member("stop");
    if (old == nullptr || old->array() == nullptr) hooks.set("stop", JSONDocument::of(JSONTree::Array{}));
    hooks.member("stop")->array()->push_back(
        JSONDocument::of(JSONTree::Object{{"command", std::string{command}}, {"timeout", 2}, {"failClosed", false}}));
    if (document.member("version") == nullptr) document.set("version", JSONDocument::of(1));
}

void removeCommand(JSONDocument& document, std::string_view command) {
    if (document.member("hooks") == nullptr) document.set("hooks", emptyObject());
    JSONDocument& hooks = *document.member("hooks");
    JSONDocument* stop = hooks.member("stop");
    JSONDocument::Array* entries = stop != nullptr ? stop->array() : nullptr;
    if (entries == nullptr) return;
    std::erase_if(*entries, [&](const JSONDocument& entry) { return isEntryOf(entry, command); });
    if (entries->empty()) hooks.remove("stop");
}

void writeCaptureScript(const OptionalPath& appSupport) {
    const std::string path = CursorHookSetup::scriptURL(appSupport);
    createFolders(FilePath::parent(path));
    replaceFile(path, CursorHookSetup::captureScript(CursorHookSetup::captureURL(appSupport)), scriptMode);
    setFileMode(path, scriptMode);
}

void repairOutdatedRecorderOncePerProcess(const OptionalPath& appSupport) {
    const std::string folder = appSupport ? *appSupport : CursorHookSetup::appSupportDirectory();
    {
        const std::lock_guard guard{repairLock};
        if (!repairAttemptedPaths.insert(FilePath::standardised(folder)).second) return;
    }
    try {
        writeCaptureScript(appSupport);
    } catch (const std::exception&) {
        // The older script goes on working; the next process tries again.
    }
}

/// Absent for a file that cannot be read or is no UTF-8.
OptionalPath readableText(const std::string& path) {
    try {
        return readText(path);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

bool contains(std::string_view text, std::string_view part) noexcept {
    return text.find(part) != std::string_view::npos;
}

void removeIfThere(const std::string& path) {
    if (!removeFile(path) && errno != ENOENT && errno != ENOTDIR) {
        throw std::system_error{errno, std::generic_category(), path};
    }
}

}  // namespace

const char* CursorHookSetup::SetupError::what() const noexcept {
    switch (kind_) {
        case Kind::CursorNotDetected: return "cursorNotDetected";
        case Kind::MalformedHooks: return "malformedHooks";
        case Kind::NoAppSupport: return "noAppSupport";
    }
    return "";
}

std::string CursorHookSetup::cursorHome(const OptionalPath& home) {
    return FilePath::joining(home ? *home : UserFolders::home(), ".cursor");
}

std::string CursorHookSetup::hooksURL(const OptionalPath& cursorHome) {
    return FilePath::joining(cursorHome ? *cursorHome : CursorHookSetup::cursorHome(), "hooks.json");
}

std::string CursorHookSetup::appSupportDirectory(const OptionalPath& home) {
    return home ? FilePath::joining(*home, "Library/Application Support/Quorvane") : UserFolders::quorvaneSupport();
}

std::string CursorHookSetup::scriptURL(const OptionalPath& appSupport) {
    return FilePath::joining(appSupport ? *appSupport : appSupportDirectory(), scriptFileName);
}

std::string CursorHookSetup::captureURL(const OptionalPath& appSupport) {
    return FilePath::joining(appSupport ? *appSupport : appSupportDirectory(), captureFileName);
}

CursorHookSetup::State CursorHookSetup::state(const OptionalPath& cursorHome, const OptionalPath& appSupport,
                                              std::optional<bool> detected) {
    if (!isDetected(detected)) return State::Unavailable;
    try {
        if (!hasCommand(readHooks(hooksURL(cursorHome), true), hookCommand(appSupport))) return State::Installable;
    } catch (const SetupError&) {
        return State::Installable;  // `install` reports it
    }
    const OptionalPath script = readableText(scriptURL(appSupport));
    if (!script || !contains(*script, scriptMarker)) return State::Installable;
    if (!contains(*script, scriptRevisionMarker)) repairOutdatedRecorderOncePerProcess(appSupport);
    return State::Active;
}

void CursorHookSetup::install(const OptionalPath& cursorHome, const OptionalPath& appSupport,
                              std::optional<bool> detected) {
    if (!isDetected(detected)) throw SetupError{SetupError::Kind::CursorNotDetected};
    const std::string path = hooksURL(cursorHome);
    const std::string command = hookCommand(appSupport);
    JSONDocument document = readHooks(path, true);
    writeCaptureScript(appSupport);
    if (hasCommand(document, command)) return;
    addCommand(document, command);
    writeHooks(document, path);
}

void CursorHookSetup::uninstall(const OptionalPath& cursorHome, const OptionalPath& appSupport) {
    const std::string path = hooksURL(cursorHome);
    std::optional<JSONDocument> document;
    try {
        document = readHooks(path, false);
    } catch (const SetupError&) {
        // Neither a missing nor a broken file stands in the way of cleaning up.
    }
    if (document) {
        removeCommand(*document, hookCommand(appSupport));
        writeHooks(*document, path);
    }
    removeIfThere(scriptURL(appSupport));
    removeIfThere(captureURL(appSupport));
}

bool CursorHookSetup::isCursorCLIDetected(std::span<const std::string> searchDirectories) {
    const std::array<std::string, 2> names{"cursor-agent", "cursor"};
    return ProviderExecutableDetection::containsExecutable(names, searchDirectories);
}

bool CursorHookSetup::isFieldReaderInstalled() {
    return FileStatus::isExecutableFile(std::string{fieldReader});
}

}  // namespace quorvane
