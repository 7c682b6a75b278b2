#include "store/LegacyMigration.h"

#include "base/FilePath.h"
#include "platform/Preferences.h"

#include <cstdio>

void LegacyMigration::runIfNeeded(Preferences &own, const std::optional<QJsonObject> &predecessor,
                                  const AppPaths &paths)
{
    const auto flag = QStringLiteral("migratedFromShelf");
    if (own.value(flag).toBool())
        return;
    const QJsonObject old = predecessor.value_or(QJsonObject());
    for (auto it = old.begin(); it != old.end(); ++it) {
        if (own.value(it.key()).isUndefined())
            own.setValue(it.key(), it.value());
    }
    // A failed move is not tried again: both folders stay as they are.
    if (FilePath::exists(paths.oldDataDir) && !FilePath::exists(paths.dataDir))
        std::rename(paths.oldDataDir.constData(), paths.dataDir.constData());
    own.setValue(flag, true);
}
