#pragma once

#include <QAccessible>

#include <functional>

class QWidget;

/// What assistive programs take a widget of ours for that the toolkit knows nothing
/// of; press: what they can ask it to do, if anything.
void setAccessibleRole(QWidget &widget, QAccessible::Role role, std::function<void()> press = {});

/// Of a window, and tells assistive programs, which the toolkit does not.
void setTitle(QWidget &window, const QString &title);
