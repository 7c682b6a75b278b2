#include "MenuShots.h"

#include "app/settings/Localizer.h"
#include "store/ShelfStore.h"
#include "views/Prompt.h"
#include "views/ShelfMenu.h"
#include "views/Symbols.h"

#include <QApplication>
#include <QDialog>

namespace {

void save(QWidget &widget, const QString &folder, const QString &name)
{
    for (const int ratio : { 1, 2 }) {
        QImage image(widget.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        widget.render(&image);
        image.save(QStringLiteral("%1/%2@%3x.png").arg(folder, name, QString::number(ratio)));
    }
}

/// The second of them is current, and a pin is on the first two.
void giveShelves(ShelfStore &store)
{
    const QString names[] = { QStringLiteral("Holiday pictures"), QStringLiteral("R&D"),
                              QStringLiteral("Everything that the tax office asked for") };
    store.newShelf();
    store.newShelf();
    for (int i = 0; i < 3; ++i) {
        store.renameShelf(store.shelves.value().at(i).id, names[i]);
        store.switchToIndex(i);
        store.add({ QUrl(QStringLiteral("file:///home/ada/%1.txt").arg(i)) });
    }
    store.newShelf();
    store.add({ QUrl(QStringLiteral("file:///home/ada/old.txt")) });
    store.closeShelf(store.currentID.value());
    store.switchToIndex(1);
    store.togglePin(store.shelves.value().at(0).id);
    store.togglePin(store.shelves.value().at(1).id);
}

}

void shootMenus(ShelfStore &store, const Localizer &texts, const QString &resources,
                const QString &folder, const QString &scheme)
{
    giveShelves(store);
    Symbols symbols(resources + QStringLiteral("/icons"));
    for (const auto direction : { Qt::LeftToRight, Qt::RightToLeft }) {
        QApplication::setLayoutDirection(direction);
        const QString side = direction == Qt::RightToLeft ? QStringLiteral("-rtl") : QString();
        ShelfMenu menu(store, texts, symbols, nullptr);
        menu.ensurePolished();
        menu.resize(menu.sizeHint());
        menu.setActiveAction(menu.actions().first());
        save(menu, folder, QStringLiteral("shelf-menu%1-%2").arg(side, scheme));

        QWidget window;
        window.setAttribute(Qt::WA_DontShowOnScreen);
        Prompt::ask(&window,
                    { .message = texts.text(QStringLiteral("shelf_rename_title")),
                      .text = store.currentTitle(),
                      .accept = texts.text(QStringLiteral("rename_action")),
                      .cancel = texts.text(QStringLiteral("cancel")) },
                    [](const std::optional<QString> &) {});
        QApplication::processEvents();
        save(*window.findChild<QDialog *>(), folder,
             QStringLiteral("shelf-rename%1-%2").arg(side, scheme));
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}
