#pragma once

#include <QWidget>

class Localizer;
class QLabel;

/// The window that tells what the program is: icon, name, version and a line
/// about it. Closes with escape.
class AboutView final : public QWidget
{
public:
    /// resources: the folder with the icons' folder. version: as its user reads it.
    AboutView(const Localizer &texts, const QString &resources, QString version,
              QWidget *parent = nullptr);

    /// In the language of the moment.
    void refreshTexts();

protected:
    void changeEvent(QEvent *event) override;

private:
    void setFonts();

    const Localizer &m_texts;
    QString m_version;
    QLabel *m_name;
    QLabel *m_versionLine;
    QLabel *m_credits;
};
