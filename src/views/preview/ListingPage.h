#pragma once

#include "base/Ticket.h"
#include "views/preview/PreviewFiles.h"
#include "views/preview/PreviewPage.h"

class QLabel;
class QTreeWidget;

/// What a folder or an archive holds: names, sizes, and dates where they are known.
class ListingPage final : public PreviewPage
{
public:
    ListingPage(const QUrl &url, PreviewFiles::Kind kind, PreviewServices services,
                QWidget *parent);

    void load() override;
    void scroll(Step step) override;
    void refreshTexts() override;

private:
    void show(const PreviewFiles::Listing &listing);

    const QUrl m_url;
    const PreviewFiles::Kind m_kind;
    PreviewServices m_services;
    QTreeWidget *m_list;
    QLabel *m_note;
    Ticket m_work;
};
