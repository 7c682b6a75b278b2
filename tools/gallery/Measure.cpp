#include "gallery/Measure.h"

#include "gallery/TextRecorder.h"
#include "views/look/TitleButton.h"
#include "views/shelf/Toast.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>

#include <algorithm>

namespace {

constexpr double touch = 2; // Boxes of neighbouring letters may meet that far.
constexpr double endless = 1e6;

QString describe(const QWidget &widget)
{
    QString name = QLatin1String(widget.metaObject()->className());
    if (!widget.objectName().isEmpty())
        name += u' ' + widget.objectName();
    return name;
}

QString describe(const QRectF &rect)
{
    return QStringLiteral("%1,%2 %3x%4")
        .arg(rect.x(), 0, 'f', 1)
        .arg(rect.y(), 0, 'f', 1)
        .arg(rect.width(), 0, 'f', 1)
        .arg(rect.height(), 0, 'f', 1);
}

const QAbstractScrollArea *scrollAreaOf(const QWidget *viewport)
{
    const auto *area = qobject_cast<const QAbstractScrollArea *>(viewport->parentWidget());
    return area && area->viewport() == viewport ? area : nullptr;
}

/// Points that letters may lean over their box, by their size; the boxes themselves are rounded.
double slackOf(const DrawnText &drawn)
{
    return std::max(1.5, 0.12 * drawn.ink.height());
}

/// Where the widget can show anything. What scrolls up and down is not lost.
QRectF roomOf(const QWidget &widget, const QWidget &window)
{
    QRectF room(-endless, -endless, 2 * endless, 2 * endless);
    for (const QWidget *w = &widget; w; w = w == &window ? nullptr : w->parentWidget()) {
        QRectF rect(w->mapTo(&window, QPoint(0, 0)), w->size());
        const auto *area = scrollAreaOf(w);
        if (area && area->verticalScrollBar()->maximum() > 0)
            return room.intersected(rect.adjusted(0, -endless, 0, endless));
        room &= rect;
    }
    return room;
}

bool isScrolledAway(const QWidget &widget, const QWidget &window)
{
    for (const QWidget *w = widget.parentWidget(); w && &widget != &window;
         w = w == &window ? nullptr : w->parentWidget()) {
        const QRect there(widget.mapTo(w, QPoint(0, 0)), widget.size());
        if (scrollAreaOf(w) && !there.isEmpty() && !w->rect().intersects(there))
            return true;
    }
    return false;
}

bool shortensByDesign(const QWidget &widget)
{
    const auto *area = scrollAreaOf(&widget);
    return qobject_cast<const QAbstractItemView *>(area)
        || dynamic_cast<const TitleButton *>(&widget);
}

/// Longer ones carry names and the words of other programs.
bool isLongToast(const QWidget &widget)
{
    constexpr qsizetype longestOwn = 80;
    return dynamic_cast<const Toast *>(&widget) && widget.accessibleName().size() > longestOwn;
}

/// Texts as their widgets were given them.
QString textOf(const QWidget &widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        return label->text();
    if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        return button->text();
    if (const auto *picker = qobject_cast<const QComboBox *>(&widget))
        return picker->currentText();
    if (const auto *field = qobject_cast<const QLineEdit *>(&widget))
        return field->text().isEmpty() ? field->placeholderText() : field->text();
    QStringList texts;
    if (qobject_cast<const QMenu *>(&widget)) {
        for (const QAction *action : widget.actions())
            texts.append(action->text());
    }
    return texts.join(u'\n');
}

bool isShortened(const DrawnText &drawn)
{
    if (!drawn.text.contains(u'…') || shortensByDesign(*drawn.widget) || isLongToast(*drawn.widget))
        return false;
    const QString whole = textOf(*drawn.widget);
    if (whole.contains(drawn.text))
        return false;
    return whole.isEmpty() || !drawn.widget->toolTip().contains(whole);
}

/// A field scrolls what was typed into it.
bool scrollsSideways(const QWidget &widget)
{
    const auto *field = qobject_cast<const QLineEdit *>(&widget);
    return field && !field->text().isEmpty();
}

/// A toast and a question lie over the rows, and have a ground of their own.
bool liesAbove(const QWidget *widget)
{
    while (widget && !dynamic_cast<const Toast *>(widget) && widget->objectName() != u"prompt")
        widget = widget->parentWidget();
    return widget;
}

bool mayOverlap(const DrawnText &one, const DrawnText &other)
{
    return liesAbove(one.widget) != liesAbove(other.widget);
}

void findClipped(const QList<DrawnText> &texts, const QWidget &window, QStringList &faults)
{
    for (const DrawnText &drawn : texts) {
        const QRectF room = roomOf(*drawn.widget, window);
        // The clip cannot be told from the room where a list scrolls.
        const auto *area = scrollAreaOf(drawn.widget);
        const QRectF seen = area ? room : room & drawn.clip;
        const double slack = slackOf(drawn);
        if (isShortened(drawn))
            faults.append(
                QStringLiteral("shortened: %1 \"%2\"").arg(describe(*drawn.widget), drawn.text));
        else if (!scrollsSideways(*drawn.widget)
                 && !seen.adjusted(-slack, -slack, slack, slack).contains(drawn.ink))
            faults.append(
                QStringLiteral("clipped: %1 \"%2\" at %3 within %4")
                    .arg(describe(*drawn.widget), drawn.text, describe(drawn.ink), describe(seen)));
    }
}

/// Of what a list has scrolled half away, the half that is left.
QRectF visibleInk(const DrawnText &drawn, const QWidget &window)
{
    return drawn.ink & QRectF(drawn.widget->mapTo(&window, QPoint(0, 0)), drawn.widget->size());
}

/// Pieces of one line that run in two directions lean on each other.
bool isOneLine(const DrawnText &one, const DrawnText &other, const QRectF &both)
{
    return one.widget == other.widget && both.width() < both.height() / 4;
}

void findOverlapping(const QList<DrawnText> &texts, const QWidget &window, QStringList &faults)
{
    for (qsizetype i = 0; i < texts.size(); ++i) {
        for (qsizetype j = i + 1; j < texts.size(); ++j) {
            const QRectF both = visibleInk(texts[i], window) & visibleInk(texts[j], window);
            const bool isDrawnTwice
                = texts[i].text == texts[j].text && texts[i].ink == texts[j].ink;
            if (both.width() <= touch || both.height() <= touch || isDrawnTwice
                || mayOverlap(texts[i], texts[j]) || isOneLine(texts[i], texts[j], both))
                continue;
            faults.append(QStringLiteral("overlapping: %1 \"%2\" and %3 \"%4\" at %5")
                              .arg(describe(*texts[i].widget), texts[i].text,
                                   describe(*texts[j].widget), texts[j].text, describe(both)));
        }
    }
}

void findMissing(const QList<DrawnText> &texts, const QList<QWidget *> &widgets,
                 const QWidget &window, QStringList &faults)
{
    for (const QWidget *widget : widgets) {
        const bool isKind = qobject_cast<const QLabel *>(widget)
            || qobject_cast<const QAbstractButton *>(widget)
            || qobject_cast<const QComboBox *>(widget);
        if (!isKind || textOf(*widget).trimmed().isEmpty() || isScrolledAway(*widget, window))
            continue;
        if (std::ranges::find(texts, widget, &DrawnText::widget) == texts.end())
            faults.append(
                QStringLiteral("not drawn: %1 \"%2\"").arg(describe(*widget), textOf(*widget)));
    }
}

/// Boxes of one layout that cover each other, or leave their parent.
void findMisplaced(const QList<QWidget *> &widgets, QStringList &faults)
{
    for (qsizetype i = 0; i < widgets.size(); ++i) {
        const QWidget &one = *widgets[i];
        const QWidget *parent = one.parentWidget();
        if (one.isWindow() || !parent->layout() || parent->layout()->indexOf(&one) < 0)
            continue;
        if (!parent->rect().contains(one.geometry()))
            faults.append(QStringLiteral("outside: %1 \"%2\" at %3 in %4")
                              .arg(describe(one), textOf(one), describe(QRectF(one.geometry())),
                                   describe(QRectF(parent->rect()))));
        for (qsizetype j = i + 1; j < widgets.size(); ++j) {
            const QWidget &other = *widgets[j];
            if (other.parentWidget() == parent && parent->layout()->indexOf(&other) >= 0
                && one.geometry().intersects(other.geometry()))
                faults.append(QStringLiteral("one over the other: %1 \"%2\" and %3 \"%4\"")
                                  .arg(describe(one), textOf(one), describe(other), textOf(other)));
        }
    }
}

}

QStringList textFaults(QWidget &window)
{
    QStringList faults;
    const QList<DrawnText> texts = TextRecorder::record(window);
    QList<QWidget *> widgets = window.findChildren<QWidget *>();
    widgets.removeIf([&](const QWidget *widget) {
        return !widget->isVisibleTo(&window) || widget->window() != window.window();
    });
    findClipped(texts, window, faults);
    findOverlapping(texts, window, faults);
    findMissing(texts, widgets, window, faults);
    findMisplaced(widgets, faults);
    for (const QWidget *widget : widgets) {
        const auto *area = qobject_cast<const QAbstractScrollArea *>(widget);
        if (area && area->horizontalScrollBar()->maximum() > 0)
            faults.append(QStringLiteral("wider than its window: ") + describe(*area));
    }
    const auto *area = qobject_cast<const QAbstractScrollArea *>(&window);
    if (area && area->horizontalScrollBar()->maximum() > 0)
        faults.append(QStringLiteral("wider than its window: ") + describe(*area));
    return faults;
}
