#pragma once

#include <QStringList>

class QWidget;

/// What is wrong with the texts of a window as it is laid out now, one line a
/// fault: a text that is cut off, shortened or not drawn at all, that covers
/// another one, or that stands outside its window. Rows of lists, names of shelves
/// and long toasts shorten by design, and so does what tells the whole in its tool tip.
QStringList textFaults(QWidget &window);
