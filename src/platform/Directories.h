#pragma once

#include <QByteArray>
#include <QList>

/// The user's folders as absolute native paths, without a slash at the end.
/// Bytes, because a home folder's name need not be valid UTF-8.
struct Directories
{
    QByteArray home;
    QByteArray data; // Where programs keep the user's data (XDG_DATA_HOME).
    QByteArray config; // XDG_CONFIG_HOME
    QByteArray state; // XDG_STATE_HOME
    QByteArray downloads; // Empty if the desktop names none.
    QByteArray pictures;
    QList<QByteArray> named; // All folders that the desktop names: documents, music, …
};
