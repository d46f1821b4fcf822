#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/analytics/AnalyticsCSVExporter.h"
#include "QuorvaneCore/analytics/AnalyticsJSONExporter.h"
#include "QuorvaneCore/analytics/AnalyticsMarkdownExporter.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "tests/analytics/AnalyticsRows.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScopedVariables.h"

namespace quorvane {
namespace {

using testing::at;
using ::testing::HasSubstr;
using testing::ProgramRun;
using testing::randomRows;
using testing::row;
using testing::ScopedVariables;

using Rows = std::vector<ModelDaySummary>;

constexpr const char* header =
    "date,provider,model,events,input_tokens,output_tokens,cache_5m_tokens,cache_1h_tokens,cache_read_tokens,cost_usd";

class Exporters : public ::testing::Test {
protected:
    [[nodiscard]] Rows one(const std::string& model, double cost = 0) const {
        return {row(ProviderID::Claude, model, start, cost)};
    }

    ScopedVariables language{"LC_ALL", "LC_MONETARY", "LANG"};
    Calendar calendar{"Asia/Kathmandu"};
    Date start = calendar.startOfDay(at("2026-11-15T12:00:00Z"));
};

TEST_F(Exporters, ofNoRowsStillHaveTheirForm) {
    EXPECT_EQ(AnalyticsCSVExporter::csv({}, calendar), header);
    EXPECT_EQ(AnalyticsJSONExporter::json({}, calendar), "[]");
    EXPECT_EQ(AnalyticsMarkdownExporter::markdown({}, calendar),
              "| date | provider | model | events | input_tokens | output_tokens | cache_5m_tokens | cache_1h_tokens | "
              "cache_read_tokens | cost_usd |\n"
              "| :-- | :-- | :-- | --: | --: | --: | --: | --: | --: | --: |");
}

TEST_F(Exporters, writeTheColumnsInTheirOrder) {
    const Rows rows{{.provider = ProviderID::MuseSpark,
                     .model = "m",
                     .day = start,
                     .eventCount = 1,
                     .inputTokens = 2222,
                     .outputTokens = 3,
                     .cache5mTokens = 4,
                     .cache1hTokens = 5,
                     .cacheReadTokens = 6,
                     .cost = 7.5}};
    EXPECT_EQ(AnalyticsCSVExporter::csv(rows, calendar),
              std::string{header} + "\r\n2026-11-15,muse_spark,m,1,2222,3,4,5,6,7.5000");
    EXPECT_THAT(AnalyticsMarkdownExporter::markdown(rows, calendar),
                ::testing::EndsWith("\n| 2026-11-15 | muse_spark | m | 1 | 2222 | 3 | 4 | 5 | 6 | 7.5000 |"));
    EXPECT_EQ(AnalyticsJSONExporter::json(rows, calendar), R"([
  {
    "cache_1h_tokens": 5,
    "cache_5m_tokens": 4,
    "cache_read_tokens": 6,
    "cost_usd": 7.5,
    "date": "2026-11-15",
    "events": 1,
    "input_tokens": 2222,
    "model": "m",
    "output_tokens": 3,
    "provider": "muse_spark"
  }
])");
}

struct CellCase {
    const char* name;
    std::string model;
    std::string csv;
    std::string markdown;
};

class ExportedCell : public Exporters, public ::testing::WithParamInterface<CellCase> {};

TEST_P(ExportedCell, isEscapedAsTheFormHasIt) {
    EXPECT_THAT(AnalyticsCSVExporter::csv(one(GetParam().model), calendar),
                HasSubstr(",claude," + GetParam().csv + ",1,"));
    EXPECT_THAT(AnalyticsMarkdownExporter::markdown(one(GetParam().model), calendar),
                HasSubstr("| claude | " + GetParam().markdown + " | 1 |"));
}

INSTANTIATE_TEST_SUITE_P(Models, ExportedCell,
                         ::testing::Values(CellCase{"plain", "a b/c", "a b/c", "a b/c"}, CellCase{"empty", "", "", ""},
                                           CellCase{"comma", "a,b", "\"a,b\"", "a,b"},
                                           CellCase{"quote", "a\"b", "\"a\"\"b\"", "a\"b"},
                                           CellCase{"bar", "a|b", "a|b", "a\\|b"},
                                           CellCase{"backslash", "a\\|", "a\\|", "a\\\\\\|"},
                                           CellCase{"lineFeed", "a\nb", "\"a\nb\"", "a b"},
                                           CellCase{"carriageReturn", "a\rb", "\"a\rb\"", "a b"},
                                           CellCase{"both", "a\r\nb\n\rc", "\"a\r\nb\n\rc\"", "a b  c"}),
                         [](const auto& tested) { return std::string{tested.param.name}; });

struct CostCase {
    double cost;
    const char* text;
    const char* number;
};

class ExportedCost : public Exporters, public ::testing::WithParamInterface<CostCase> {};

TEST_P(ExportedCost, hasFourDecimals) {
    EXPECT_THAT(AnalyticsCSVExporter::csv(one("m", GetParam().cost), calendar),
                ::testing::EndsWith(std::string{","} + GetParam().text));
    EXPECT_THAT(AnalyticsMarkdownExporter::markdown(one("m", GetParam().cost), calendar),
                ::testing::EndsWith(std::string{"| "} + GetParam().text + " |"));
    EXPECT_THAT(AnalyticsJSONExporter::json(one("m", GetParam().cost), calendar),
                HasSubstr(std::string{"\"cost_usd\": "} + GetParam().number + ","));
}

INSTANTIATE_TEST_SUITE_P(Costs, ExportedCost,
                         ::testing::Values(CostCase{0, "0.0000", "0"}, CostCase{0.12345, "0.1235", "0.1235"},
                                           CostCase{1234567.5, "1234567.5000", "1234567.5"},
                                           CostCase{0.00004, "0.0000", "0"}, CostCase{2, "2.0000", "2"},
                                           CostCase{0.0003, "0.0003", "3e-04"}));

TEST_F(Exporters, costThatJSONCannotSayGivesAnEmptyArray) {
    EXPECT_EQ(AnalyticsJSONExporter::json(one("m", std::numeric_limits<double>::infinity()), calendar), "[]");
    EXPECT_EQ(AnalyticsJSONExporter::json(one("m", std::nan("")), calendar), "[]");
}

TEST_F(Exporters, neverSort) {
    const Rows rows{row(ProviderID::Opencode, "z", start, 1), row(ProviderID::Claude, "a", start - 86400, 2),
                    row(ProviderID::Opencode, "b", start, 3)};
    EXPECT_EQ(AnalyticsCSVExporter::csv(rows, calendar),
              std::string{header} +
                  "\r\n2026-11-15,opencode,z,1,1,0,0,0,0,1.0000\r\n2026-11-14,claude,a,1,2,0,0,0,0,2.0000"
                  "\r\n2026-11-15,opencode,b,1,3,0,0,0,0,3.0000");
}

TEST_F(Exporters, doNotEscapeSlashesInJSON) {
    EXPECT_THAT(AnalyticsJSONExporter::json(one("anthropic/x"), calendar), HasSubstr("\"anthropic/x\""));
}

TEST_F(Exporters, proposeAFileNameWithTheLocalDay) {
    const Date now = at("2026-11-14T20:00:00Z");  // the 15th in Kathmandu
    EXPECT_EQ(AnalyticsCSVExporter::defaultFilename(now, calendar), "quorvane-analytics-2026-11-15.csv");
    EXPECT_EQ(AnalyticsJSONExporter::defaultFilename(now, calendar), "quorvane-analytics-2026-11-15.json");
    EXPECT_EQ(AnalyticsMarkdownExporter::defaultFilename(now, Calendar{"UTC"}), "quorvane-analytics-2026-11-14.md");
}

TEST_F(Exporters, writeDatesInTheDigitsOfTheLocale) {
    language.set("LC_ALL", "ar_EG.UTF-8");
    EXPECT_THAT(AnalyticsCSVExporter::csv(one("m"), calendar), HasSubstr("\r\n٢٠٢٦-١١-١٥,claude,m,1,"));
}

/// Rows with all that could upset a reader in their model's name.
Rows hostileRows(const Calendar& calendar) {
    Rows rows = randomRows(7, at("2026-11-15T12:00:00Z"), calendar);
    const std::vector<std::string> models{"a,b", "\"",   "\"\"", "a\r\nb", "\n", "\r",  ",",        "a|b",
                                          "'",   "=1+1", "ä✓🚀",  "\\",     "\t", " x ", "</script>"};
    for (std::size_t index = 0; index < rows.size(); ++index)
        rows[index].model = models[index % models.size()];
    return rows;
}

/// The rows as a JSON array of arrays of texts, by the test's own hand.
std::string expected(const Rows& rows, const Calendar& calendar) {
    JSONTree::Array all;
    for (const ModelDaySummary& each : rows) {
        JSONTree::Array cells{calendar.day(each.day).text(), std::string{rawName(each.provider)}, each.model};
        for (const std::int64_t count : {each.eventCount, each.inputTokens, each.outputTokens, each.cache5mTokens,
                                         each.cache1hTokens, each.cacheReadTokens})
            cells.emplace_back(std::to_string(count));
        cells.emplace_back(std::to_string(std::lround(each.cost * 10000)));
        all.emplace_back(std::move(cells));
    }
    return JSONWriter::compact(JSONTree{std::move(all)}) + "\n";
}

TEST_F(Exporters, rowsAreReadBackFromCSV) {
    const Rows rows = hostileRows(calendar);
    const ProgramRun read = ProgramRun::of(
        {"python3", "-c",
         "import csv,io,json,sys\n"
         "text=sys.stdin.buffer.read().decode()\n"
         "rows=list(csv.reader(io.StringIO(text,newline=''),strict=True))[1:]\n"
         "print(json.dumps([r[:9]+[str(round(float(r[9])*10000))] for r in rows],ensure_ascii=False,"
         "separators=(',',':')))"},
        {.environment = {{"PYTHONIOENCODING", "utf-8"}}, .input = AnalyticsCSVExporter::csv(rows, calendar)});
    EXPECT_EQ(read.output, expected(rows, calendar)) << read.error;
}

TEST_F(Exporters, rowsAreReadBackFromJSON) {
    const Rows rows = hostileRows(calendar);
    const ProgramRun read = ProgramRun::of(
        {"jq", "-c",
         "[.[] | [.date, .provider, .model, (.events|tostring), (.input_tokens|tostring), (.output_tokens|tostring), "
         "(.cache_5m_tokens|tostring), (.cache_1h_tokens|tostring), (.cache_read_tokens|tostring), "
         "(.cost_usd * 10000 | round | tostring)]]"},
        {.input = AnalyticsJSONExporter::json(rows, calendar)});
    EXPECT_EQ(read.output, expected(rows, calendar)) << read.error;
}

}  // namespace
}  // namespace quorvane
