#pragma once

#include <QWidget>

class QLabel;

/// One page of the tour: its picture, title and subtitle, and what may stand below.
class WelcomePage final : public QWidget
{
public:
    /// scene, and extras if there are any, become its children.
    WelcomePage(QWidget *scene, QWidget *extras, QWidget *parent);

    void setTexts(const QString &title, const QString &subtitle);
    /// What lies below the picture needs that much at that width.
    int textHeight(int width) const;
    /// The picture takes that much at the top; the gap comes on top of the usual one.
    void setHeroHeight(int height, int gap);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void place();
    void setFonts();

    QWidget *m_scene;
    QWidget *m_extras;
    QLabel *m_title;
    QLabel *m_subtitle;
    int m_heroHeight = 0;
    int m_gap = 0;
};
