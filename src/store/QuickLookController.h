#pragma once

#include <QList>
#include <QUrl>

/// What the preview shows. Written by the shelf view, read by the panel.
struct QuickLookController
{
    QList<QUrl> urls;
    int startIndex = 0;
};
