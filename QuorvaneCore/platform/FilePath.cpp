#include "QuorvaneCore/platform/FilePath.h"

#include <algorithm>
#include <vector>

namespace quorvane {
namespace {

std::string_view withoutTrailingSlashes(std::string_view path) noexcept {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

}  // namespace

std::string_view FilePath::lastComponent(std::string_view path) noexcept {
    path = withoutTrailingSlashes(path);
    if (path == "/") return path;
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view FilePath::extension(std::string_view path) noexcept {
    const std::string_view name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    return name.substr(dot + 1);
}

std::string FilePath::joining(std::string_view folder, std::string_view name) {
    std::string path{folder};
    if (!path.empty() && path.back() != '/') path += '/';
    path += name;
    return path;
}

std::string FilePath::parent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return ".";
    return slash == 0 ? "/" : std::string{withoutTrailingSlashes(path.substr(0, slash))};
}

std::string FilePath::standardised(std::string_view path) {
    const bool absolute = path.starts_with('/');
    std::vector<std::string_view> components;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view component = path.substr(begin, end - begin);
        begin = end + 1;
        if (component.empty() || component == ".") continue;
        const bool hasParent = !components.empty() && components.back() != "..";
        if (component == ".." && (hasParent || absolute)) {
            if (hasParent) components.pop_back();
        } else {
            components.push_back(component);
        }
    }
    std::string result = absolute ? "/" : "";
    for (const std::string_view component : components) {
        if (!result.empty() && result.back() != '/') result += '/';
        result += component;
    }
    return result.empty() ? "." : result;
}

}  // namespace quorvane
