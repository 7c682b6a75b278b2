#pragma once

#include "views/preview/PreviewFiles.h"
#include "views/preview/PreviewPage.h"

class QLabel;

/// Anything else, and what cannot be shown: its icon, name, kind, size and date; of
/// a web location the address.
class CardPage final : public PreviewPage
{
public:
    CardPage(PreviewItem item, PreviewServices services, QWidget *parent);

    void load() override;
    void copy() override;

private:
    struct Facts
    {
        std::optional<PreviewFiles::Status> status;
        std::optional<QUrl> address;
    };
    void show(const Facts &facts);
    QLabel *addLine(double size, bool strong);

    const PreviewItem m_item;
    PreviewServices m_services;
    QLabel *m_icon;
    QLabel *m_name;
    QLabel *m_kind;
    QLabel *m_facts;
};
