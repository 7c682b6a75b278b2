#include "app/AppDelegate.h"

#include "fileops/FileOps.h"
#include "platform/MediaPlayer.h"
#include "platform/PanelWindow.h"
#include "views/look/ProgramIcon.h"
#include "views/preview/PreviewWindow.h"

#include <utility>

void AppDelegate::connectPreview()
{
    m_panel->onPreview = [this] {
        if (m_preview && m_preview->isUp())
            m_preview->dismiss();
        else
            showPreview();
        return true;
    };
    m_panel->isPreviewVisible = [this] { return m_preview && m_preview->isUp(); };
    m_panel->onWillHide = [this] {
        m_refusalRead.reset();
        m_autoShown = false; // Whatever drag it was up for.
        if (m_preview)
            m_preview->dismiss();
    };
    m_view->actions.preview = [this] { showPreview(); };
    m_view->onPreviewItems = [this] { previewItemsChanged(); };
}

/// In the panel's place among the keyboard's windows: closed, it gives it back.
void AppDelegate::showPreview()
{
    if (!m_preview) {
        m_preview = std::make_unique<PreviewWindow>(
            m_ql,
            PreviewServices { m_desktop.pictures, m_previewCache, m_desktop.workers,
                              m_desktop.queue, m_desktop.icons, m_texts, m_desktop.play });
        m_preview->setWindowIcon(programIcon(m_desktop.resources));
        m_preview->bringToFront = m_desktop.bringToFront;
        m_preview->onOpen = [this](const QUrl &url) {
            FileOps::open({ url }, m_desktop.applications, m_desktop.workers);
        };
        m_preview->onKeyboardFree = [this] {
            if (m_panel->isVisible())
                m_desktop.panelWindow.focus();
        };
    }
    m_preview->setMotion(m_desktop.look.value().motion);
    m_preview->open(m_desktop.panelWindow.frame().toRect());
}

/// Follows the selection, but stays where the user has walked when something else changes.
void AppDelegate::previewItemsChanged()
{
    using Shown = PreviewWindow::Shown;
    const auto selection = m_store.selection.value();
    const bool isChosenAnew
        = std::exchange(m_previewSelection, selection) != selection && selection.size() == 1;
    if (m_preview && m_preview->isUp())
        m_preview->reloadData(isChosenAnew ? Shown::StartIndex : Shown::Same);
    else if (m_panel && m_panel->isVisible() && !selection.isEmpty())
        m_previewCache.prepare({ m_ql.urls.value(m_ql.startIndex) });
}
