#pragma once

#include "platform/Address.h"

#include <QByteArrayList>
#include <QList>
#include <QUrl>

#include <optional>

/// Arguments come without the program's name.
namespace CommandLine {

/// Answers --version, --help and options that there are not, as GNU programs do: the exit
/// status with which the process is to end, before it starts anything and needs a screen.
/// None where the program is to run; options of the toolkit ("-platform NAME") are its own.
std::optional<int> answered(const QByteArrayList &arguments);

/// The files and addresses among them. What begins with "-" is none, unless it comes after
/// "--". folder: where relative paths begin.
QList<Address> urls(const QByteArrayList &arguments, const QByteArray &folder);

}
