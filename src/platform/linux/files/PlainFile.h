#pragma once

#include <QByteArray>

struct stat;

/// Files that may be read without anything else happening. Waits for the disk:
/// worker threads only.
namespace PlainFile {

/// For reading; -1 for what is none: a pipe or a device would be waited for, or do
/// something.
int open(const QByteArray &path);
/// As PictureDecoder::version() has it.
QByteArray version(const struct stat &status);

}
