#pragma once

#include <QHash>
#include <QList>
#include <QUrl>

/// What the preview shows. Written by the shelf view, read by the panel.
struct QuickLookController
{
    QList<QUrl> urls;
    int startIndex = 0;
    QHash<QUrl, QString> titles {}; // Of those whose rows do not show the file's name.
};
