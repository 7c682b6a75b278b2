#include "views/settings/Picker.h"

#include <QSignalBlocker>
#include <QWheelEvent>

#include <algorithm>

Picker::Picker(QWidget *parent)
    : QComboBox(parent)
{
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
    setFocusPolicy(Qt::StrongFocus);
}

void Picker::setWord(const QString &word)
{
    const QSignalBlocker quiet(this);
    setCurrentIndex(std::max(0, findData(word)));
}

void Picker::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}
