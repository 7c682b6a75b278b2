#pragma once

#include <QByteArrayList>

#include <optional>

namespace CommandLine {

/// Answers --version, --help and options that there are not, as GNU programs do: the exit
/// status with which the process is to end, before it starts anything and needs a screen.
/// None where the program is to run; options of the toolkit ("-platform NAME") are its own.
/// arguments: without the program's name.
std::optional<int> answered(const QByteArrayList &arguments);

}
