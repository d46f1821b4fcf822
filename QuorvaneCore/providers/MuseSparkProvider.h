#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane {

/// Reads what Muse Spark used. It has no client of its own on this machine and runs through OpenCode, so this is the
/// part of OpenCode's database, or log, that `OpenCodeProvider` leaves out: one event a message.
class MuseSparkProvider final : public IndexableProvider {
public:
    /// `root` is OpenCode's folder, its database or its log; absent means ".local/share/opencode" under the user's home
    /// directory.
    explicit MuseSparkProvider(std::optional<std::string> root = std::nullopt);

    [[nodiscard]] ProviderID id() const override { return ProviderID::MuseSpark; }
    [[nodiscard]] std::vector<std::string> watchPaths() const override { return {root_}; }

    /// Whether Muse Spark was ever used: by the database, or by the first 262144 bytes of the log.
    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] std::vector<UsageEvent> loadEvents() const override;

    /// One file at most, the one that OpenCode's reader reads too.
    [[nodiscard]] std::vector<std::string> dataFiles() const override;

    /// Not the path, under which the same file stands for OpenCode's reader.
    [[nodiscard]] std::string storeKey(const std::string& file) const override { return "muse_spark:" + file; }

    [[nodiscard]] bool canTailAppend() const override { return false; }
    [[nodiscard]] std::int64_t parserRevision() const override { return 2; }

    /// By the time of the newest message for a database, whole for a log.
    [[nodiscard]] ResetPolicy resetPolicy() const override;

    /// Of a database, the offset is a time in milliseconds since 1970: messages of that time and later are decoded, and
    /// `consumed` is that of the newest one. A log is decoded whole, and `consumed` is its size, 0 if it cannot be
    /// queried.
    [[nodiscard]] DecodedFile decodeFile(const std::string& file, std::int64_t offset) const override;
    [[nodiscard]] std::optional<Date> watermarkTimestamp(std::int64_t offset) const override;

    /// All events of a database. One that cannot be read gives none.
    [[nodiscard]] static std::vector<UsageEvent> decodeDatabase(const std::string& file);

    /// The messages that were created at `createdAtOrAfterMillis` or later. `consumed` is the time of the newest
    /// message of any model, at least that bound. With the bound 0, a database without a message of Muse Spark gives
    /// its sessions instead.
    [[nodiscard]] static DecodedFile decodeDatabase(const std::string& file, std::int64_t createdAtOrAfterMillis);

    /// The key=value fields of one line of the log.
    using Fields = std::map<std::string, std::string, std::less<>>;

    /// The call that a log line tells of; absent for none, and for one of another model.
    [[nodiscard]] static std::optional<UsageEvent> decode(const Fields& fields);

    /// Whether a name is one of Muse Spark's, in any case of its letters.
    [[nodiscard]] static bool isSparkModelID(std::optional<std::string_view> model) noexcept;

    /// The same for a name beside its vendor: of "meta", any name with "spark" in it is one.
    [[nodiscard]] static bool isSparkModelObject(std::optional<std::string_view> id,
                                                 std::optional<std::string_view> providerID) noexcept;

    /// Without the vendor in front; "muse-spark-1.1" for an absent or empty name.
    [[nodiscard]] static std::string normalizedModelID(std::optional<std::string_view> model);

    struct Model {
        std::optional<std::string> id;
        std::optional<std::string> providerID;

        friend bool operator==(const Model&, const Model&) = default;
    };

    /// What the model column of a session names: the texts "id" and "providerID" of a JSON object, else itself.
    [[nodiscard]] static Model parseModelColumn(const std::optional<std::string>& column);

private:
    std::string root_;
};

}  // namespace quorvane
