#pragma once

#include "views/preview/PreviewFiles.h"
#include "views/preview/PreviewPage.h"

#include <memory>

class QLabel;
class QPlainTextEdit;

/// Text, as it stands in the file: nothing in it is interpreted. It can be selected
/// and copied.
class TextPage final : public PreviewPage
{
public:
    TextPage(const QUrl &url, const PreviewServices &services, QWidget *parent);

    void load() override;
    void scroll(Step step) override;
    void copy() override;

private:
    void show(const PreviewFiles::Text &text);

    const QUrl m_url;
    PreviewServices m_services;
    QPlainTextEdit *m_text;
    QLabel *m_cut;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
