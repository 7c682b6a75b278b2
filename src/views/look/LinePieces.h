#pragma once

#include <QStringList>

/// A text in the pieces between which a line may break: words, and where there
/// are no spaces, as in Japanese, single characters.
QStringList linePieces(const QString &text);
