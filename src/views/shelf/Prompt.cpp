#include "views/shelf/Prompt.h"

#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int fieldHeight = 24;

QString dialogName()
{
    return QStringLiteral("prompt");
}

/// Stands above a panel that is above all others, and goes with it.
class PromptDialog final : public QDialog
{
public:
    PromptDialog(QWidget *window, const Prompt::Request &request,
                 std::function<void(std::optional<QString>)> done)
        : QDialog(window, Qt::Dialog | Qt::WindowStaysOnTopHint)
        , m_field(new QLineEdit(request.text, this))
        , m_done(std::move(done))
    {
        setObjectName(dialogName());
        setAttribute(Qt::WA_DeleteOnClose);
        setWindowModality(Qt::WindowModal);
        setWindowTitle(request.message);
        auto *message = new PlainLabel(request.message, this);
        message->setWordWrap(true);
        message->setBuddy(m_field);
        m_field->setAccessibleName(request.message);
        auto *buttons = new QDialogButtonBox(this);
        buttons->addButton(request.accept, QDialogButtonBox::AcceptRole)->setDefault(true);
        buttons->addButton(request.cancel, QDialogButtonBox::RejectRole);
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(16, 14, 16, 14);
        column->setSpacing(10);
        column->addWidget(message);
        column->addWidget(m_field);
        column->addWidget(buttons);
        const int width
            = std::max(qRound(request.fieldWidth * Look::textScale), buttons->sizeHint().width());
        m_field->setFixedSize(width, std::max(fieldHeight, m_field->minimumSizeHint().height()));
        message->setFixedSize(width, message->heightForWidth(width));
        setFixedSize(sizeHint());
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        connect(this, &QDialog::finished, this, [this](int result) {
            if (m_hadKeyboard)
                connect(this, &QObject::destroyed, parentWidget(),
                        [window = parentWidget()] { giveKeyboard(*window); });
            m_done(result == Accepted ? std::optional(m_field->text()) : std::nullopt);
        });
        window->installEventFilter(this);
    }

    void select(qsizetype length)
    {
        m_field->setFocus();
        if (length < 0)
            m_field->selectAll();
        else
            m_field->setSelection(0, static_cast<int>(length));
    }

    /// openbox would leave the keyboard with nobody: it goes back to the window, once
    /// this one is gone.
    void done(int result) override
    {
        m_hadKeyboard = isActiveWindow();
        QDialog::done(result);
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (object == parent() && event->type() == QEvent::Hide)
            reject();
        return QDialog::eventFilter(object, event);
    }

private:
    static void giveKeyboard(QWidget &window)
    {
        // Whoever got the answer may have hidden it, or asked the next question.
        if (window.isVisible() && !QGuiApplication::modalWindow())
            window.activateWindow();
    }

    QLineEdit *m_field;
    bool m_hadKeyboard = false;
    std::function<void(std::optional<QString>)> m_done;
};

}

void Prompt::ask(QWidget *over, const Request &request,
                 std::function<void(std::optional<QString>)> done)
{
    QWidget *window = over->window();
    auto *standing = window->findChild<QDialog *>(dialogName(), Qt::FindDirectChildrenOnly);
    if (standing && standing->isVisible()) {
        standing->activateWindow();
        return;
    }
    auto *dialog = new PromptDialog(window, request, std::move(done));
    dialog->open();
    dialog->select(request.selectionLength);
    // The press or the key that asked for it was the user's last act: that is the
    // time which the request bears, and by which window managers grant it.
    dialog->activateWindow();
}
