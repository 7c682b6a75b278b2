#pragma once

#include "views/preview/PreviewFiles.h"
#include "views/preview/PreviewPage.h"

class QLabel;
class QPlainTextEdit;

/// Text, as it stands in the file: nothing in it is interpreted. It can be selected
/// and copied, by keyboard once Tab has gone to it.
class TextPage final : public PreviewPage
{
public:
    TextPage(const QUrl &url, const PreviewServices &services, QWidget *parent);

    void load() override;
    void scroll(Step step) override;
    void copy() override;
    void refreshTexts() override;

private:
    void show(const PreviewFiles::Text &text);

    const QUrl m_url;
    PreviewServices m_services;
    QPlainTextEdit *m_text;
    QLabel *m_note;
};
