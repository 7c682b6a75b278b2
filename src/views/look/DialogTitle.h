#pragma once

#include <QString>

/// Of the button or menu entry that leads to the dialog: its text without the "…" at its end.
inline QString dialogTitle(QString text)
{
    if (text.endsWith(u'…'))
        text.chop(1);
    return text.trimmed();
}
