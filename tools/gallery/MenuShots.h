#pragma once

#include <QString>

class Localizer;
class ShelfStore;

/// Writes pictures of the menu of shelves and of the question for a shelf's name,
/// at one and two pixels a point; scheme is part of their names. The store is
/// given shelves for it.
void shootMenus(ShelfStore &store, const Localizer &texts, const QString &resources,
                const QString &folder, const QString &scheme);
