#pragma once
#include <QImage>
#include <string>

namespace quorvane::testing {

/// How far two pictures are apart.
struct PictureDifference {
    bool hasOtherSize = false;
    double meanLevel = 0;     ///< mean distance of all channels, of 255
    double strongPixels = 0;  ///< share of the pixels of which a channel is more than 48 levels off
    int largestCluster = 0;   ///< strong pixels in the worst square of 8 x 8 pixels

    /// What another version of a font library or another processor may make of the same drawing; a changed digit is
    /// more.
    [[nodiscard]] bool isTolerable() const;
    [[nodiscard]] std::string text() const;
};

[[nodiscard]] PictureDifference difference(const QImage& left, const QImage& right);

/// Compares with the kept picture of that name. A picture that differs is left beside the test's temporary files, and
/// the returned text says where; empty if they are alike. With QUORVANE_UPDATE_EXPECTED set it replaces the kept one.
[[nodiscard]] std::string compareWithKept(const QImage& picture, const std::string& name);

}  // namespace quorvane::testing
