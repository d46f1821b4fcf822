#include "tests/desktop/PictureComparison.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace quorvane::testing {
namespace {

constexpr int strongLevel = 48;

int distance(QRgb left, QRgb right) {
    return std::max({std::abs(qRed(left) - qRed(right)), std::abs(qGreen(left) - qGreen(right)),
                     std::abs(qBlue(left) - qBlue(right)), std::abs(qAlpha(left) - qAlpha(right))});
}

}  // namespace

bool PictureDifference::isTolerable() const {
    return !hasOtherSize && meanLevel <= 1.0 && strongPixels <= 0.002 && largestCluster <= 5;
}

std::string PictureDifference::text() const {
    if (hasOtherSize) return "another size";
    return fmt::format("mean {:.3f} levels, {:.4f} % of the pixels far off, at most {} of them in 8 x 8", meanLevel,
                       strongPixels * 100, largestCluster);
}

PictureDifference difference(const QImage& left, const QImage& right) {
    PictureDifference result;
    if (left.size() != right.size() || left.isNull()) return {.hasOtherSize = true};
    const QImage first = left.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage second = right.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    double levels = 0;
    int strong = 0;
    std::map<std::pair<int, int>, int> clusters;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            const int away = distance(first.pixel(x, y), second.pixel(x, y));
            levels += away;
            if (away <= strongLevel) continue;
            ++strong;
            result.largestCluster = std::max(result.largestCluster, ++clusters[{x / 8, y / 8}]);
        }
    }
    const double pixels = static_cast<double>(first.width()) * first.height();
    result.meanLevel = levels / pixels;
    result.strongPixels = strong / pixels;
    return result;
}

std::string compareWithKept(const QImage& picture, const std::string& name) {
    const QString kept = QString::fromStdString(QUORVANE_TEST_DATA "/widget/" + name + ".png");
    if (std::getenv("QUORVANE_UPDATE_EXPECTED") != nullptr) {
        return picture.save(kept) ? std::string{} : "cannot write " + kept.toStdString();
    }
    const QImage expected{kept};
    if (expected.isNull()) return "there is no kept picture " + kept.toStdString();
    const PictureDifference apart = difference(picture, expected);
    if (apart.isTolerable()) return {};
    const std::string drawn = ::testing::TempDir() + "/" + name + "-drawn.png";
    picture.save(QString::fromStdString(drawn));
    return apart.text() + ": " + drawn;
}

}  // namespace quorvane::testing
