#include "views/ViewWorld.h"

#include "views/look/Brand.h"
#include "views/look/DesktopStyle.h"
#include "views/look/PlainText.h"

#include <QAccessible>
#include <QStyle>

#include <gtest/gtest.h>

TEST(AccessibilityTest, TheTitleTellsThatItOpensAMenuAndWhetherItIsPinned)
{
    ViewWorld w;
    auto *title = QAccessible::queryAccessibleInterface(w.headerButton(u"shelf_menu_help"_s));
    EXPECT_TRUE(title->state().hasPopup);
    EXPECT_EQ(title->text(QAccessible::Description), u"shelf_menu_help");
    w.store().togglePin(w.store().currentID.value());
    w.settle();
    EXPECT_EQ(title->text(QAccessible::Description), u"shelf_pinned. shelf_menu_help");
}

TEST(PlainTextTest, NoNameIsMarkupForAToolTip)
{
    for (const QString &name :
         { u"<img src=\"/dev/zero\">"_s, u"a<b>c"_s, u"<!doctype html>"_s, u"<?xml ?><p>"_s,
           u" &lt;p>"_s, u"\t<p>"_s, u"<\np>"_s, u"x"_s.repeated(79) + u"<table>"_s }) {
        SCOPED_TRACE(name.toStdString());
        QString tip = ToolTip::plain(name);
        EXPECT_FALSE(Qt::mightBeRichText(tip));
        tip.remove(QChar(0x2060)).remove(u'\n');
        EXPECT_EQ(tip, QString(name).replace(u'\t', u' ').remove(u'\n'));
    }
    EXPECT_EQ(ToolTip::plain(u"1 < 2 & 3"_s), u"1 < 2 & 3");
    EXPECT_LT(ToolTip::plain(QString(100000, u'w')).size(), 1100);
    EXPECT_EQ(PlainLabel(u"<b>"_s).textFormat(), Qt::PlainText);
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
    for (const QColor &stop : { Brand::top, Brand::bottom })
        EXPECT_GE(Look::contrast(Brand::onGradient(), stop), 4.5);
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
            EXPECT_GE(over(Look::secondary(palette), ground), least);
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

TEST(LookTest, TheCountOfASelectionCanBeReadInEveryPalette)
{
    ViewWorld w(1);
    w.click(w.row(0));
    for (const auto scheme : { DesktopLook::Scheme::Light, DesktopLook::Scheme::Dark }) {
        for (const auto level : { DesktopLook::Contrast::Normal, DesktopLook::Contrast::High }) {
            w.view->setPalette(DesktopStyle::palette(scheme, level));
            const QImage shown = w.handle()->grab().toImage();
            double best = 0; // Of the symbol or the digit on what is above it.
            for (int x = 8; x < shown.width() - 8; ++x)
                best = std::max(best,
                                Look::contrast(shown.pixelColor(x, shown.height() / 2),
                                               shown.pixelColor(x, 2)));
            EXPECT_GE(best, level == DesktopLook::Contrast::High ? 7 : 4.5);
        }
    }
}
