#include "views/ViewWorld.h"

#include "views/DesktopStyle.h"
#include "views/Look.h"

#include <QAccessible>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

QAccessibleInterface *listOf(const ViewWorld &w)
{
    return QAccessible::queryAccessibleInterface(&w.list());
}

/// By the Web Content Accessibility Guidelines, 1 to 21.
double contrast(const QColor &one, const QColor &other)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](double c) {
            return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
            + 0.0722 * linear(color.blueF());
    };
    const auto [low, high] = std::minmax(luminance(one), luminance(other));
    return (high + 0.05) / (low + 0.05);
}

}

TEST(AccessibilityTest, RowsAreFoundAndWorked)
{
    ViewWorld w(3);
    auto *list = listOf(w);
    ASSERT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), 3);
    auto *second = list->child(1);
    const QString name = w.item(1).url.fileName();
    EXPECT_EQ(second->text(QAccessible::Name), name);
    EXPECT_EQ(list->child(1), second);
    EXPECT_EQ(list->indexOfChild(second), 1);
    const QPoint middle = w.view->mapToGlobal(w.row(1));
    EXPECT_TRUE(second->rect().contains(middle));
    EXPECT_EQ(list->childAt(middle.x(), middle.y()), second);

    const auto act = [&](const QString &action) {
        second->actionInterface()->doAction(action);
        w.settle();
    };
    act(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(w.selectedRows(), QList<int> { 1 });
    EXPECT_TRUE(second->state().selected);
    EXPECT_TRUE(second->state().focused);
    EXPECT_FALSE(list->child(0)->state().focused);

    act(QStringLiteral("remove"));
    EXPECT_EQ(list->childCount(), 2);
    EXPECT_FALSE(second->isValid());
    w.store().undoRemove();
    w.settle();
    EXPECT_EQ(list->child(1)->text(QAccessible::Name), name);
}

TEST(DesktopStyleTest, EveryPaletteCanBeRead)
{
    using Scheme = DesktopLook::Scheme;
    using Contrast = DesktopLook::Contrast;
    for (const auto scheme : { Scheme::Light, Scheme::Dark }) {
        for (const auto level : { Contrast::Normal, Contrast::High }) {
            SCOPED_TRACE(int(scheme) * 10 + int(level));
            const QPalette palette = DesktopStyle::palette(scheme, level);
            const QColor window = palette.color(QPalette::Window);
            const double least = level == Contrast::High ? 7 : 4.5;
            EXPECT_GT(contrast(Look::text(palette), window), 2 * least);
            const QColor secondary = Look::secondary(palette);
            EXPECT_GT(
                contrast(Look::blended(Look::text(palette), window, secondary.alphaF()), window),
                least);
            EXPECT_GT(contrast(palette.color(QPalette::HighlightedText),
                               palette.color(QPalette::Highlight)),
                      least);
            EXPECT_GT(contrast(palette.color(QPalette::Link), palette.color(QPalette::Base)),
                      least);
            EXPECT_EQ(Look::isHighContrast(palette), level == Contrast::High);
        }
    }
}
