#pragma once

#include <QByteArray>

/// What must hold of every file's bytes: they are refused, or what was read
/// comes back equal after it was written.
namespace FileForms {

enum class Verdict { Refused, Kept, Broken };

Verdict shelves(const QByteArray &bytes);
Verdict uploads(const QByteArray &bytes);
Verdict bookmark(const QByteArray &bytes);
Verdict webloc(const QByteArray &bytes);

}
