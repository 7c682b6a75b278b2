#pragma once

#include <QComboBox>

/// A choice of words, each with a label. The wheel scrolls the form past it
/// rather than changing a setting by accident.
class Picker final : public QComboBox
{
public:
    explicit Picker(QWidget *parent = nullptr);

    QString word() const { return currentData().toString(); }
    /// A word without a row has the first one's meaning, and shows as that.
    /// Tells nobody.
    void setWord(const QString &word);

protected:
    void wheelEvent(QWheelEvent *event) override;
};
