#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

class Localizer;
class QWidget;

namespace FileOps {

/// Asks for a file's new name, with the old one's stem selected so that typing
/// keeps the extension. `done` is called only with a name that differs and that a
/// file can have.
void promptRename(QWidget *over, const QUrl &url, const Localizer &texts,
                  std::function<void(const QString &)> done);

/// What was typed, as a file's new name.
std::optional<QString> acceptedName(const QString &typed, const QString &oldName);

}
