#include "views/look/MenuLabel.h"

QString menuLabel(QString name)
{
    for (QChar &c : name) {
        if (c.category() == QChar::Other_Control)
            c = u' ';
    }
    return name.replace(u'&', QLatin1String("&&"));
}
