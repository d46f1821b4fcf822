#include <QAccessible>

#include <gtest/gtest.h>

#include "QuorvaneWidgetExtension/desktop/WidgetView.h"
#include "tests/desktop/Entries.h"

namespace quorvane::testing {
namespace {

/// The window's one child that a screen reader reads; null if there are more or none.
QAccessibleInterface* readElement(desktop::WidgetView& window) {
    QAccessibleInterface* const element = QAccessible::queryAccessibleInterface(&window);
    if (element == nullptr || element->childCount() != 1) return nullptr;
    return element->child(0);
}

class WidgetAccessibility : public ::testing::TestWithParam<QuorvaneWidgetFamily> {
protected:
    WidgetAccessibility() { QAccessible::setActive(true); }
};

TEST_P(WidgetAccessibility, isOneElementThatSaysTheSummary) {
    const QuorvaneWidgetEntryView view = entryView(ownSnapshot(), GetParam());
    const WidgetEnvironment environment = environmentOf(WidgetColorScheme::Light);
    desktop::WidgetView window;
    window.show(view, environment);
    window.show();
    const QAccessibleInterface* const element = readElement(window);
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->text(QAccessible::Name).toStdString(), view.accessibilitySummary(environment));
    EXPECT_EQ(element->role(), QAccessible::StaticText);
    EXPECT_EQ(element->childCount(), 0);
    EXPECT_FALSE(element->state().invisible);
}

INSTANTIATE_TEST_SUITE_P(Families, WidgetAccessibility, ::testing::ValuesIn(allQuorvaneWidgetFamilies),
                         [](const auto& row) { return std::string{rawName(row.param)}; });

TEST(WidgetAccessibilityTest, saysTheNewSummaryAfterAChange) {
    QAccessible::setActive(true);
    desktop::WidgetView window;
    window.show(entryView(ownSnapshot(), QuorvaneWidgetFamily::small), environmentOf(WidgetColorScheme::Light));
    window.show();
    WidgetSnapshot changed = ownSnapshot();
    changed.title = "Codex";
    window.show(entryView(changed, QuorvaneWidgetFamily::large), environmentOf(WidgetColorScheme::Light));
    const QAccessibleInterface* const element = readElement(window);
    ASSERT_NE(element, nullptr);
    EXPECT_TRUE(element->text(QAccessible::Name).startsWith(QStringLiteral("Codex, today ")));
    EXPECT_EQ(window.size(), QSize(364, 382));
}

}  // namespace
}  // namespace quorvane::testing
