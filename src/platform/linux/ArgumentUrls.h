#pragma once

#include <QByteArrayList>
#include <QList>
#include <QUrl>

/// The files and addresses among a command line's arguments. What begins with "-"
/// is none, unless it comes after "--". folder: where relative paths begin.
QList<QUrl> argumentUrls(const QByteArrayList &arguments, const QByteArray &folder);
