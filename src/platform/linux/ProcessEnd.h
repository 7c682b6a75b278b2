#pragma once

#include <QProcess>

#include <memory>

/// Kills it, and waits for nothing: it may hang in the kernel on a file that never
/// answers. The object goes when the process has ended. Main thread.
void endSoon(std::unique_ptr<QProcess> process);
