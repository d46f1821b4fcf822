#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "QuorvaneCore/platform/ISODate.h"

namespace quorvane {
namespace {

struct DateCase {
    const char* name;
    double seconds;
    const char* text;
};
class ISODateText : public ::testing::TestWithParam<DateCase> {};

TEST_P(ISODateText, isThePlainFormInUTC) {
    EXPECT_EQ(ISODate::text(Date{GetParam().seconds}), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(ByDate, ISODateText,
                         ::testing::Values(DateCase{"epoch", 0, "1970-01-01T00:00:00Z"},
                                           DateCase{"ordinary", 1767268845, "2026-01-01T12:00:45Z"},
                                           DateCase{"fractionIsCutOff", 1767268845.999, "2026-01-01T12:00:45Z"},
                                           DateCase{"fractionBeforeTheEpochIsCutOffToo", -0.25, "1969-12-31T23:59:59Z"},
                                           DateCase{"leapDay", 1709164800, "2024-02-29T00:00:00Z"},
                                           DateCase{"distantPast", -62135769600.0 + 172800, "0001-01-01T00:00:00Z"},
                                           DateCase{"lastSecond", 253402300799.5, "9999-12-31T23:59:59Z"},
                                           DateCase{"beyondTheForm", 1e18, "9999-12-31T23:59:59Z"},
                                           DateCase{"beforeTheForm", -1e18, "0000-01-01T00:00:00Z"},
                                           DateCase{"notANumber", std::numeric_limits<double>::quiet_NaN(),
                                                    "0000-01-01T00:00:00Z"}),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(ISODateText, readsBackAsTheSameSecond) {
    for (double seconds = -62135596800.0; seconds < 253402300800.0; seconds += 86400.0 * 997 + 12345) {
        EXPECT_EQ(ISODate::parsePlain(ISODate::text(Date{seconds})), Date{seconds});
    }
}

}  // namespace
}  // namespace quorvane
