#include "gallery/Measure.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>

#include <gtest/gtest.h>

#include <functional>

namespace {

/// Writes two texts by itself, that far apart.
class Painted final : public QWidget
{
public:
    Painted(int distance, QWidget *parent)
        : QWidget(parent)
        , m_distance(distance)
    {
        setFixedSize(120, 60);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.drawText(4, 20, QStringLiteral("One"));
        painter.drawText(4, 20 + m_distance, QStringLiteral("Other"));
    }

private:
    int m_distance;
};

const QString words = QStringLiteral("Some words of text");

QLabel *label(QWidget &window, int width)
{
    auto *result = new QLabel(words, &window);
    result->setFixedWidth(width);
    return result;
}

struct Case
{
    const char *what;
    const char *fault; // How the only one begins; none if empty.
    std::function<QWidget *(QWidget &)> make;
};

QWidget *shortenedLabel(QWidget &window)
{
    auto *result = new QLabel(QStringLiteral("Some…text"), &window);
    return result;
}

QWidget *scrolled(QWidget &window)
{
    auto *area = new QScrollArea(&window);
    auto *content = new QWidget;
    auto *column = new QVBoxLayout(content);
    for (int i = 0; i < 30; ++i)
        column->addWidget(new QLabel(words));
    area->setWidget(content);
    area->setFixedSize(300, 70);
    return area;
}

const Case cases[] = {
    { "a label with room", "", [](QWidget &w) { return label(w, 300); } },
    { "a label that is too narrow", "clipped: QLabel \"Some words of text\"",
      [](QWidget &w) { return label(w, 60); } },
    { "a label that is too low for its lines", "clipped: QLabel",
      [](QWidget &w) {
          auto *result = label(w, 90);
          result->setWordWrap(true);
          result->setAlignment(Qt::AlignTop);
          result->setFixedHeight(QFontMetrics(result->font()).height() + 2);
          return result;
      } },
    { "a button that is too narrow", "clipped: QPushButton",
      [](QWidget &w) {
          auto *result = new QPushButton(words, &w);
          result->setFixedWidth(50);
          return result;
      } },
    { "a picker that is too narrow", "clipped: QComboBox",
      [](QWidget &w) {
          auto *result = new QComboBox(&w);
          result->addItem(words);
          result->setFixedWidth(80);
          return result;
      } },
    { "painted lines with room", "", [](QWidget &w) { return new Painted(24, &w); } },
    { "painted lines over each other", R"(overlapping: QWidget "One" and QWidget "Other")",
      [](QWidget &w) { return new Painted(5, &w); } },
    { "a painted line below its widget", "clipped: QWidget \"Other\"",
      [](QWidget &w) { return new Painted(45, &w); } },
    { "dots that belong to the text", "", shortenedLabel },
    { "no room at all", "not drawn: QLabel",
      [](QWidget &w) {
          auto *result = label(w, 0);
          return result;
      } },
    { "what is scrolled away", "", scrolled },
    { "rows of a list that shorten", "",
      [](QWidget &w) {
          auto *result = new QListWidget(&w);
          result->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
          result->setTextElideMode(Qt::ElideMiddle);
          result->setFixedSize(90, 100);
          result->addItem(words);
          return result;
      } },
};

}

TEST(MeasureTest, FindsEachKindOfFaultAndNoOther)
{
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        QWidget window;
        auto *column = new QVBoxLayout(&window);
        column->addWidget(c.make(window));
        const QStringList faults = textFaults(window);
        const QString all = faults.join(u'\n');
        if (*c.fault) {
            EXPECT_TRUE(all.startsWith(QLatin1String(c.fault))) << qPrintable(all);
        } else {
            EXPECT_TRUE(faults.isEmpty()) << qPrintable(all);
        }
    }
}

TEST(MeasureTest, FindsLabelsThatCoverEachOther)
{
    QWidget window;
    auto *one = new QLabel(words, &window);
    auto *other = new QLabel(words, &window);
    window.resize(300, 100);
    one->adjustSize();
    other->adjustSize();
    other->move(one->x() + 12, one->y() + 3);
    EXPECT_FALSE(textFaults(window).filter(QStringLiteral("overlapping")).isEmpty());
    other->move(0, 50);
    EXPECT_EQ(textFaults(window).join(u'\n'), QString());
}
