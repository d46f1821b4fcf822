#pragma once
#include <QString>
#include <string_view>

namespace quorvane::desktop {

/// A text of the plain C++ side, which is UTF-8, as one of Qt's.
[[nodiscard]] inline QString qString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace quorvane::desktop
