#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// Finds the library's resource folders at run time, from any program that uses it: beside the program, below its
/// "Resources" folder, under share/quorvane of an installed prefix, or up to eight folders above.
/// A bundle is a directory named "Quorvane_", a name, ".bundle". Any thread may call any operation.
class QuorvaneResourceBundle {
public:
    QuorvaneResourceBundle() = delete;

    /// The path of the bundle of that name; absent if none is found. What was found is remembered for the life of the
    /// process; what was not is looked for again at the next call.
    [[nodiscard]] static std::optional<std::string> bundle(std::string_view name);

    /// The path of a resource file in a bundle; absent if the bundle or the file is missing.
    [[nodiscard]] static std::optional<std::string> url(std::string_view resource,
                                                        std::optional<std::string_view> extension,
                                                        std::string_view bundleName);

    /// How many times the candidates were walked in this process.
    [[nodiscard]] static std::int64_t candidateWalkCount();
};

}  // namespace quorvane
