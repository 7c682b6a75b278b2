#include "views/ViewWorld.h"

#include "views/Brand.h"
#include "views/DesktopStyle.h"
#include "views/PlainText.h"
#include "views/onboarding/WelcomeView.h"

#include <QAccessible>
#include <QStyle>

#include <gtest/gtest.h>

TEST(AccessibilityTest, ButtonsOfOurOwnTellTheirTextStateAndMenu)
{
    ViewWorld w;
    const auto of = [](QObject *object) { return QAccessible::queryAccessibleInterface(object); };
    WelcomeView tour(w.settings, w.store(), w.texts, w.store().makeDemoFile(),
                     WelcomeDesktop { w.world.queue, w.session, w.icons, ViewWorld::resources() });
    tour.go(1);
    QStringList names;
    QStringList checked;
    for (auto *button : tour.findChildren<QAbstractButton *>()) {
        names.append(of(button)->text(QAccessible::Name));
        if (of(button)->role() == QAccessible::RadioButton && of(button)->state().checked)
            checked.append(names.last());
    }
    EXPECT_FALSE(names.contains(QString())) << names.join(u'|').toStdString();
    EXPECT_TRUE(names.contains(QStringLiteral("wel_next")));
    EXPECT_EQ(checked, QStringList { QStringLiteral("wel_p2_title") });

    auto *title = of(w.headerButton(QStringLiteral("shelf_menu_help")));
    EXPECT_TRUE(title->state().hasPopup);
    EXPECT_EQ(title->text(QAccessible::Description), u"shelf_menu_help");
    w.store().togglePin(w.store().currentID.value());
    w.settle();
    EXPECT_EQ(title->text(QAccessible::Description), u"shelf_pinned. shelf_menu_help");
}

TEST(PlainTextTest, NoNameIsMarkupForAToolTip)
{
    for (const QString &name :
         { QStringLiteral("<img src=\"/dev/zero\">"), QStringLiteral("a<b>c"),
           QStringLiteral("<!doctype html>"), QStringLiteral("<?xml ?><p>"),
           QStringLiteral(" &lt;p>"), QStringLiteral("\t<p>"), QStringLiteral("<\np>"),
           QStringLiteral("x").repeated(79) + QStringLiteral("<table>") }) {
        SCOPED_TRACE(name.toStdString());
        QString tip = ToolTip::plain(name);
        EXPECT_FALSE(Qt::mightBeRichText(tip));
        tip.remove(QChar(0x2060)).remove(u'\n');
        EXPECT_EQ(tip, QString(name).replace(u'\t', u' ').remove(u'\n'));
    }
    EXPECT_EQ(ToolTip::plain(QStringLiteral("1 < 2 & 3")), u"1 < 2 & 3");
    EXPECT_LT(ToolTip::plain(QString(100000, u'w')).size(), 1100);
    EXPECT_EQ(PlainLabel(QStringLiteral("<b>")).textFormat(), Qt::PlainText);
}

/// What the eye must tell apart, in each palette of ours and in the toolkit's own.
TEST(LookTest, EveryPaletteCanBeRead)
{
    using Scheme = DesktopLook::Scheme;
    using Contrast = DesktopLook::Contrast;
    QList<QPalette> palettes { QApplication::style()->standardPalette() };
    for (const auto scheme : { Scheme::Light, Scheme::Dark }) {
        for (const auto level : { Contrast::Normal, Contrast::High })
            palettes.append(DesktopStyle::palette(scheme, level));
    }
    // Known values of the formula.
    EXPECT_DOUBLE_EQ(Look::contrast(Qt::white, Qt::black), 21);
    EXPECT_NEAR(Look::contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
    for (qsizetype i = 0; i < palettes.size(); ++i) {
        SCOPED_TRACE(i);
        const QPalette &palette = palettes[i];
        const QColor window = palette.color(QPalette::Window);
        const QColor base = palette.color(QPalette::Base);
        const QColor highlight = palette.color(QPalette::Highlight);
        const QColor selected = Look::blended(highlight, window, Look::selected);
        const auto over = [](const QColor &color, const QColor &ground) {
            return Look::contrast(Look::blended(color, ground, color.alphaF()), ground);
        };
        const bool isOurs = i > 0;
        const bool isHigh = i == 2 || i == 4;
        EXPECT_EQ(Look::isHighContrast(palette), isHigh);
        const double least = isHigh ? 7 : 4.5;
        for (const QColor &ground : { window, base, Look::card(palette), selected }) {
            EXPECT_GE(over(Look::text(palette), ground), least);
            EXPECT_GE(over(Look::secondary(palette), ground), isOurs ? least : 4);
            EXPECT_GE(over(Look::ring(palette), ground), 3);
            EXPECT_GE(over(Look::edge(palette), ground), 3);
            const auto line = Brand::line({ 0, 0, 9, 9 }, Qt::LeftToRight, palette);
            for (const auto &stop : line.stops())
                EXPECT_GE(over(stop.second, ground), 3);
        }
        if (!isOurs)
            continue;
        EXPECT_GE(over(palette.color(QPalette::PlaceholderText), base), 4.5);
        EXPECT_GE(over(palette.color(QPalette::HighlightedText), highlight), least);
        EXPECT_GE(over(palette.color(QPalette::Link), base), least);
        EXPECT_GE(over(highlight, window), 3);
    }
}

TEST(LookTest, TheCapsuleOfASelectionIsNotWhiteOnTheGradientAtHighContrast)
{
    ViewWorld w(1);
    w.click(w.row(0));
    for (const auto scheme : { DesktopLook::Scheme::Light, DesktopLook::Scheme::Dark }) {
        const QPalette palette = DesktopStyle::palette(scheme, DesktopLook::Contrast::High);
        w.view->setPalette(palette);
        const QImage shown = w.handle()->grab().toImage();
        EXPECT_EQ(shown.pixelColor(shown.width() / 2, 2), palette.color(QPalette::Highlight));
    }
}
