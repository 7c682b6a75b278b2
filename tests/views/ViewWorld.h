#pragma once

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "platform/fake/FakeAutostart.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePreferences.h"
#include "store/QuickLookController.h"
#include "store/StoreWorld.h"
#include "views/shelf/ShelfView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QListView>
#include <QMenu>
#include <QTest>
#include <QWindow>

#include <memory>

using namespace Qt::Literals::StringLiterals;

/// A platform without a screen neither grabs the keyboard nor sizes dialogs, and says so.
class QuietPlatform
{
public:
    QuietPlatform()
    {
        before = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context,
                                           const QString &text) {
            if (!text.contains(u"propagateSizeHints") && !text.contains(u"grabbing the keyboard"))
                before(type, context, text);
        });
    }
    ~QuietPlatform() { qInstallMessageHandler(before); }

private:
    inline static QtMessageHandler before = nullptr;
};

/// A shelf view on a screen without pixels, over a store in virtual time. Input
/// goes through the window, so that it reaches whichever widget is there.
class ViewWorld
{
public:
    explicit ViewWorld(int count = 0, Motion motion = Motion::Reduced)
    {
        world.store().add(world.files(count));
        view = std::make_unique<ShelfView>(world.store(), settings, texts, ql, icons, session,
                                           world.queue, resources());
        view->setMotion(motion);
        view->resize(238, 318);
        view->show();
        view->activateWindow();
        settle();
    }

    void settle()
    {
        world.queue.settle();
        QApplication::processEvents();
    }

    ShelfStore &store() { return world.store(); }
    ShelfItem item(int row) { return store().items.value()[row]; }
    QList<int> selectedRows()
    {
        QList<int> rows;
        for (int row = 0; row < store().items.value().size(); ++row) {
            if (store().selection.value().contains(item(row).id))
                rows.append(row);
        }
        return rows;
    }

    QListView &list() const { return *view->findChild<QListView *>(); }
    QRect rowRect(int row) const
    {
        const QRect rect = list().visualRect(list().model()->index(row, 0));
        return rect.translated(list().viewport()->mapTo(view.get(), QPoint(0, 0)));
    }
    QPoint row(int row) const { return rowRect(row).center(); }
    QPoint button(int row) const
    {
        return { rowRect(row).right() - 38, rowRect(row).center().y() };
    }
    QPoint belowRows() const { return { view->width() / 2, view->height() - 20 }; }

    /// A visible button by its help text, which here is the text's key.
    QAbstractButton *headerButton(const QString &help) const
    {
        for (auto *candidate : view->findChildren<QAbstractButton *>()) {
            if (candidate->isVisible() && candidate->toolTip() == help)
                return candidate;
        }
        return nullptr;
    }
    QWidget *handle() const
    {
        for (auto *candidate : view->findChildren<QWidget *>()) {
            if (candidate->isVisible() && candidate->toolTip().startsWith(u"drag_out"))
                return candidate;
        }
        return nullptr;
    }

    void press(const QPoint &at, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(window(), Qt::LeftButton, modifiers, at);
    }
    void move(const QPoint &to) { QTest::mouseMove(window(), to); }
    void release(const QPoint &at, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseRelease(window(), Qt::LeftButton, modifiers, at);
        settle();
    }
    void click(const QPoint &at, Qt::KeyboardModifiers modifiers = {})
    {
        press(at, modifiers);
        release(at, modifiers);
    }
    void doubleClick(const QPoint &at, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseDClick(window(), Qt::LeftButton, modifiers, at);
        settle();
    }
    QWindow *window() const { return view->windowHandle(); }

    /// An entry of a menu or of one inside it.
    static QAction *find(const QMenu &menu, const QString &text)
    {
        for (QAction *entry : menu.actions()) {
            if (entry->text() == text)
                return entry;
            if (QAction *inside = entry->menu() ? find(*entry->menu(), text) : nullptr)
                return inside;
        }
        return nullptr;
    }

    static QString resources() { return QStringLiteral(VANTLE_SOURCE_DIR "/src/resources"); }

private:
    FakePreferences m_preferences;
    FakeAutostart m_autostart;

public:
    World world;
    Localizer texts { QString(), {} }; // Every text shows as its key.
    AppSettings settings { m_preferences, m_autostart, texts, {} };
    QuickLookController ql;
    FakeIcons icons;
    FakeDragSession session;
    std::unique_ptr<ShelfView> view;
};
