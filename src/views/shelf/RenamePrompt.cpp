#include "views/shelf/RenamePrompt.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "views/shelf/Prompt.h"

#include <utility>

namespace {

constexpr int fieldWidth = 300; // Points.

}

void FileOps::promptRename(QWidget *over, const QUrl &url, const Localizer &texts,
                           std::function<void(const QString &)> done)
{
    const QString name = FilePath::display(FilePath::lastComponent(FilePath::fromUrl(url)));
    const qsizetype dot = name.lastIndexOf(u'.');
    const Prompt::Request request { texts.text(QStringLiteral("rename_title")),
                                    name,
                                    dot > 0 ? dot : name.size(),
                                    texts.text(QStringLiteral("rename_action")),
                                    texts.text(QStringLiteral("cancel")),
                                    fieldWidth };
    Prompt::ask(over, request, [name, done = std::move(done)](const std::optional<QString> &typed) {
        if (const auto accepted = typed ? acceptedName(*typed, name) : std::nullopt)
            done(*accepted);
    });
}

std::optional<QString> FileOps::acceptedName(const QString &typed, const QString &oldName)
{
    const QString name = typed.trimmed();
    if (name.isEmpty() || name == oldName || name.contains(u'/') || name.contains(QChar(0))
        || name.startsWith(u'.'))
        return std::nullopt;
    return name;
}
