#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QLocale>
#include <QString>
#include <QUrl>

#include <optional>

/// What the preview reads of files by itself: plain text, the names in folders, and
/// what a file's status tells. All of it may wait for a disk: worker threads only,
/// but for what asks the name alone.
namespace PreviewFiles {

enum class Kind { Image, Document, Text, Media, Folder, Archive, WebLocation, Other };
/// By the name alone.
Kind kindOf(const QUrl &url);
/// Of the type, as its user reads it; empty where nobody knows it.
QString typeName(const QUrl &url);
/// In thousands of bytes, as file managers tell it.
QString sizeText(qint64 bytes, const QLocale &locale);
/// Whether such text is code, which stands in columns.
bool isCode(const QUrl &url);

struct Text
{
    QString text;
    bool whole = true;
};
/// The first megabyte, of at most 50,000 lines. None where it is no plain file, or holds no text.
std::optional<Text> readText(const QByteArray &path);

struct Entry
{
    QString name;
    qint64 size = 0; // Bytes; of files only.
    QDateTime modified;
    bool folder = false;
};
struct Listing
{
    QList<Entry> entries; // Folders first, by name.
    bool whole = true;
};
std::optional<Listing> list(const QByteArray &path);

struct Status
{
    qint64 size = 0; // Bytes.
    QDateTime modified;
    bool folder = false;
};
std::optional<Status> status(const QByteArray &path);

/// The address in a web location file.
std::optional<QUrl> readAddress(const QByteArray &path);

}
