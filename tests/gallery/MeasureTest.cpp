#include "gallery/Measure.h"

#include <QHBoxLayout>
#include <QLabel>
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

struct
{
    const char *what;
    const char *fault; // How the only one begins; none if empty.
    std::function<QWidget *(QWidget &)> make;
} const cases[] = {
    { "a label with room", "", [](QWidget &w) { return label(w, 300); } },
    { "a label that is too narrow", "clipped: QLabel \"Some words of text\"",
      [](QWidget &w) { return label(w, 60); } },
    { "a button that is too narrow", "clipped: QPushButton",
      [](QWidget &w) {
          auto *result = new QPushButton(words, &w);
          result->setFixedWidth(50);
          return result;
      } },
    { "painted lines with room", "", [](QWidget &w) { return new Painted(24, &w); } },
    { "painted lines over each other", R"(overlapping: QWidget "One" and QWidget "Other")",
      [](QWidget &w) { return new Painted(5, &w); } },
    { "a painted line below its widget", "clipped: QWidget \"Other\"",
      [](QWidget &w) { return new Painted(45, &w); } },
    { "dots that belong to the text", "",
      [](QWidget &w) { return new QLabel(QStringLiteral("Some…text"), &w); } },
    { "no room at all", "not drawn: QLabel", [](QWidget &w) { return label(w, 0); } },
    { "what is scrolled away", "", scrolled },
};

}

TEST(MeasureTest, FindsEachKindOfFaultAndNoOther)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        QWidget window;
        auto *column = new QVBoxLayout(&window);
        column->addWidget(c.make(window));
        const QString all = textFaults(window).join(u'\n');
        EXPECT_TRUE(*c.fault ? all.startsWith(QLatin1String(c.fault)) : all.isEmpty())
            << qPrintable(all);
    }
}
