#pragma once
#include <string>
#include <string_view>

namespace quorvane {

/// Paths are byte strings with slashes, and keys of the index; they are never normalised behind a caller's back.
/// (`std::filesystem::path` splits and copies its components at each construction, which a refresh over ten thousand
/// files would pay ten thousand times.)
/// All operations are pure; any thread may call them.
class FilePath {
public:
    FilePath() = delete;

    /// The text behind the last slash, trailing slashes aside: "app" of "/srv/app" and of "/srv/app/".
    /// A path of slashes alone gives "/", an empty path the empty text. The view points into `path`.
    [[nodiscard]] static std::string_view lastComponent(std::string_view path) noexcept;

    /// The text behind the last dot of the last component; empty without a dot, and for a name that merely begins or
    /// ends with one. The view points into `path`.
    [[nodiscard]] static std::string_view extension(std::string_view path) noexcept;

    /// `folder` and `name` with exactly one slash between them.
    [[nodiscard]] static std::string joining(std::string_view folder, std::string_view name);

    /// All before the last component: "/srv" of "/srv/app". "/" is its own parent; a bare name has the parent ".".
    [[nodiscard]] static std::string parent(std::string_view path);

    /// Without empty, "." and ".." components, resolved as text: links are not looked at.
    [[nodiscard]] static std::string standardised(std::string_view path);
};

}  // namespace quorvane
