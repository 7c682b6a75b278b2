#pragma once

#include "platform/Icons.h"

#include <QPixmap>

/// Plain squares: green for files, blue for web locations.
class FakeIcons final : public Icons
{
public:
    QIcon forFile(const QUrl &) override { return square(Qt::darkGreen); }
    QIcon forWebLocation() override { return square(Qt::blue); }

private:
    static QIcon square(Qt::GlobalColor colour)
    {
        QPixmap pixmap(40, 40);
        pixmap.fill(colour);
        return QIcon(pixmap);
    }
};
