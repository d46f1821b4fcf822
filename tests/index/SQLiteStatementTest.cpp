#include <limits>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/index/SQLiteStatement.h"
#include "tests/index/IndexTestSupport.h"

namespace quorvane {
namespace {

using testing::IndexFile;

class SQLiteStatementValues : public ::testing::Test {
protected:
    IndexFile file;
    std::shared_ptr<SQLiteDatabase> database{SQLiteDatabase::open(file.path)};
};

TEST_F(SQLiteStatementValues, integersComeBackExactly) {
    const auto statement = database->prepare("SELECT ?1, ?2, typeof(?1);");
    statement->bind(1, std::numeric_limits<std::int64_t>::min());
    statement->bind(2, std::numeric_limits<std::int64_t>::max());
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->integer(0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(statement->integer(1), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(statement->text(2), "integer");
    EXPECT_FALSE(statement->step());
}

TEST_F(SQLiteStatementValues, floatsComeBackExactly) {
    const auto statement = database->prepare("SELECT ?1, ?2, typeof(?1);");
    statement->bind(1, 1767225600.1234567);
    statement->bind(2, -0.1);
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->real(0), 1767225600.1234567);
    EXPECT_EQ(statement->real(1), -0.1);
    EXPECT_EQ(statement->text(2), "real");
}

TEST_F(SQLiteStatementValues, textsComeBackAndAreCopied) {
    const auto statement = database->prepare("SELECT ?1, typeof(?1);");
    {
        std::string text = "Größe 価格";
        statement->bind(1, text);
        text.assign(text.size(), 'x');
    }
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->text(0), "Größe 価格");
    EXPECT_EQ(statement->textView(0), "Größe 価格");
    EXPECT_EQ(statement->text(1), "text");
}

TEST_F(SQLiteStatementValues, aTextEndsAtItsFirstNulByte) {
    const auto statement = database->prepare("SELECT ?1, length(?1);");
    statement->bind(1, std::string{"ab\0cd", 5});
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->text(0), "ab");
    EXPECT_EQ(statement->integer(1), 2);
}

TEST_F(SQLiteStatementValues, anAbsentTextIsNullAndAnEmptyOneIsNot) {
    const auto statement = database->prepare("SELECT ?1, typeof(?1), ?2, typeof(?2);");
    statement->bind(1, std::optional<std::string>{});
    statement->bind(2, std::optional<std::string>{""});
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->text(0), std::nullopt);
    EXPECT_EQ(statement->text(1), "null");
    EXPECT_EQ(statement->text(2), "");
    EXPECT_EQ(statement->text(3), "text");
}

TEST_F(SQLiteStatementValues, nullReadsAsZeroAndAsTheEmptyView) {
    const auto statement = database->prepare("SELECT NULL;");
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->integer(0), 0);
    EXPECT_EQ(statement->real(0), 0.0);
    EXPECT_EQ(statement->textView(0), "");
    EXPECT_EQ(statement->text(0), std::nullopt);
}

TEST_F(SQLiteStatementValues, parametersAreNullAfterAResetUntilBoundAgain) {
    const auto statement = database->prepare("SELECT ?1, ?2;");
    statement->bind(1, std::int64_t{1});
    statement->bind(2, std::string{"text"});
    ASSERT_TRUE(statement->step());
    statement->reset();
    statement->bind(2, std::string{"again"});
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->text(0), std::nullopt);
    EXPECT_EQ(statement->text(1), "again");
}

TEST_F(SQLiteStatementValues, aParameterThatIsNotThereIsIgnored) {
    const auto statement = database->prepare("SELECT ?1;");
    statement->bind(1, std::int64_t{4});
    statement->bind(2, std::int64_t{5});
    statement->bind(0, std::string{"no"});
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->integer(0), 4);
}

TEST_F(SQLiteStatementValues, stepTellsRowsFromTheEnd) {
    const auto statement = database->prepare("SELECT 1 UNION ALL SELECT 2;");
    EXPECT_TRUE(statement->step());
    EXPECT_TRUE(statement->step());
    EXPECT_FALSE(statement->step());
}

TEST_F(SQLiteStatementValues, aStepThatFailsThrowsAndTheStatementCanRunAgain) {
    database->execute("CREATE TABLE t (x UNIQUE); INSERT INTO t VALUES (1);");
    const auto statement = database->prepare("INSERT INTO t VALUES (?1);");
    statement->bind(1, std::int64_t{1});
    try {
        statement->run();
        FAIL() << "nothing was thrown";
    } catch (const SQLiteError& error) {
        EXPECT_EQ(error.kind(), SQLiteError::Kind::Step);
        EXPECT_STREQ(error.what(), "sqlite step: UNIQUE constraint failed: t.x");
    }
    statement->reset();
    statement->bind(1, std::int64_t{2});
    statement->run();
    EXPECT_THAT(testing::column(*database, "SELECT x FROM t ORDER BY x;"), ::testing::ElementsAre("1", "2"));
}

TEST_F(SQLiteStatementValues, aStatementKeepsItsConnectionOpen) {
    const std::size_t before = testing::openDescriptors();
    auto other = SQLiteDatabase::open(file.home.path("other.sqlite"));
    auto statement = other->prepare("SELECT 42;");
    other.reset();
    EXPECT_GT(testing::openDescriptors(), before);
    ASSERT_TRUE(statement->step());
    EXPECT_EQ(statement->integer(0), 42);
    statement.reset();
    EXPECT_EQ(testing::openDescriptors(), before);
}

}  // namespace
}  // namespace quorvane
