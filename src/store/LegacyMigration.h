#pragma once

#include "store/AppPaths.h"

#include <QJsonObject>

#include <optional>

class Preferences;

/// Takes over what the predecessor left, once: the flag "migratedFromShelf" is
/// set even when there was nothing to take.
namespace LegacyMigration {

/// Copies the predecessor's preferences whose keys have no value yet, and moves
/// its data folder unless there is one of our own. To be called before anything
/// makes that folder.
void runIfNeeded(Preferences &own, const std::optional<QJsonObject> &predecessor,
                 const AppPaths &paths);

}
