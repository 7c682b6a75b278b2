#include "views/shelf/Prompt.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"
#include "views/look/TextButton.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int cardMargin = 10; // To the view's edges.
constexpr int cardPadding = 12;
constexpr int cardRadius = 10;
constexpr int fieldHeight = 24;
constexpr double veil = 0.78; // Of the window's colour over what lies below.

QString sheetName()
{
    return QStringLiteral("prompt");
}

/// Veils the view, and carries the card with the question.
class Sheet final : public QWidget
{
public:
    Sheet(QWidget *over, const Prompt::Request &request,
          std::function<void(std::optional<QString>)> done)
        : QWidget(over)
        , m_former(over->window()->focusWidget())
        , m_card(new QWidget(this))
        , m_title(new PlainLabel(request.message, m_card))
        , m_field(new QLineEdit(request.text, m_card))
        , m_buttons(new QDialogButtonBox(m_card))
        , m_done(std::move(done))
    {
        setObjectName(sheetName());
        setAttribute(Qt::WA_NoMousePropagation);
        setAccessibleRole(*this, QAccessible::Dialog);
        setAccessibleName(request.message);
        fill(request);
        closeOff();
        over->installEventFilter(this);
        setGeometry(over->rect());
        show();
    }

    void takeKeyboard() { m_field->setFocus(); }
    void select(qsizetype length)
    {
        if (length < 0)
            m_field->selectAll();
        else
            m_field->setSelection(0, static_cast<int>(length));
    }

protected:
    /// Keys that nothing in it knows go no further.
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Escape)
            end(std::nullopt);
    }

    /// The keyboard stays inside.
    bool focusNextPrevChild(bool next) override
    {
        const auto follow = [next](QWidget *widget) {
            return next ? widget->nextInFocusChain() : widget->previousInFocusChain();
        };
        QWidget *const at = m_field->window()->focusWidget();
        if (!at || !isAncestorOf(at))
            return false;
        for (QWidget *stop = follow(at); stop != at; stop = follow(stop)) {
            if (isAncestorOf(stop) && stop->isVisible() && (stop->focusPolicy() & Qt::TabFocus)) {
                stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
                return true;
            }
        }
        return false;
    }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (object == parent() && event->type() == QEvent::Hide)
            end(std::nullopt);
        else if (object == parent() && event->type() == QEvent::Resize)
            setGeometry(parentWidget()->rect());
        return QWidget::eventFilter(object, event);
    }

    void resizeEvent(QResizeEvent *) override { arrange(); }

    void changeEvent(QEvent *event) override
    {
        QWidget::changeEvent(event);
        if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutDirectionChange)
            arrange();
    }

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), Look::faded(palette().color(QPalette::Window), veil));
        painter.setPen(Look::shade(palette(), 0.22));
        painter.setBrush(Look::card(palette()));
        painter.drawRoundedRect(QRectF(m_card->geometry()).adjusted(0.5, 0.5, -0.5, -0.5),
                                cardRadius, cardRadius);
    }

private:
    void fill(const Prompt::Request &request)
    {
        QFont heading = m_title->font();
        heading.setWeight(QFont::DemiBold); // The size stays the desktop's.
        m_title->setFont(heading);
        m_title->setWordWrap(true);
        m_title->setBuddy(m_field);
        m_field->setAccessibleName(request.message);
        m_field->setMinimumHeight(std::max(fieldHeight, m_field->minimumSizeHint().height()));
        auto *accept = new TextButton(request.accept);
        m_buttons->addButton(accept, QDialogButtonBox::AcceptRole);
        accept->setDefault(true);
        // Return presses the button that has the keyboard, and only that one is to look so.
        connect(qApp, &QApplication::focusChanged, this, [accept](QWidget *, QWidget *now) {
            accept->setDefault(now == accept || !qobject_cast<QPushButton *>(now));
        });
        m_buttons->addButton(new TextButton(request.cancel), QDialogButtonBox::RejectRole);
        auto *column = new QVBoxLayout(m_card);
        column->setContentsMargins(cardPadding, cardPadding, cardPadding, cardPadding);
        column->addWidget(m_title);
        column->addWidget(m_field);
        column->addWidget(m_buttons);
        m_card->setMaximumWidth(qRound(request.fieldWidth * Look::textScale) + 2 * cardPadding);
        auto *whole = new QVBoxLayout(this);
        whole->setContentsMargins(cardMargin, cardMargin, cardMargin, cardMargin);
        whole->addStretch();
        whole->addWidget(m_card);
        whole->addStretch();
        connect(m_field, &QLineEdit::returnPressed, this, [this] { end(m_field->text()); });
        connect(m_buttons, &QDialogButtonBox::accepted, this, [this] { end(m_field->text()); });
        connect(m_buttons, &QDialogButtonBox::rejected, this, [this] { end(std::nullopt); });
    }

    /// Assistive programs could press what merely lies below. What takes no presses stays as
    /// it is: a toast lies above.
    void closeOff()
    {
        for (auto *below : parentWidget()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            if (below == this || !below->isEnabled()
                || below->testAttribute(Qt::WA_TransparentForMouseEvents))
                continue;
            below->setEnabled(false);
            m_below.append(below);
        }
    }

    /// Buttons beside each other where they fit, else each as wide as the card.
    void arrange()
    {
        m_title->setAlignment(Qt::Alignment(Look::leading(layoutDirection())) | Qt::AlignVCenter);
        int wanted = -m_buttons->layout()->spacing();
        for (const auto *button : m_buttons->buttons())
            wanted += button->sizeHint().width() + m_buttons->layout()->spacing();
        const int room
            = std::min(width() - 2 * cardMargin, m_card->maximumWidth()) - 2 * cardPadding;
        m_buttons->setOrientation(wanted <= room ? Qt::Horizontal : Qt::Vertical);
        m_buttons->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

    /// Whoever gets the answer may ask the next question.
    void end(const std::optional<QString> &answer)
    {
        const auto done = std::exchange(m_done, {});
        if (!done)
            return;
        setObjectName({});
        for (const auto &below : m_below) {
            if (below)
                below->setEnabled(true);
        }
        if (m_former)
            m_former->setFocus();
        hide();
        deleteLater();
        done(answer);
    }

    QPointer<QWidget> m_former; // Had the keyboard before.
    QList<QPointer<QWidget>> m_below;
    QWidget *m_card;
    QLabel *m_title;
    QLineEdit *m_field;
    QDialogButtonBox *m_buttons;
    std::function<void(std::optional<QString>)> m_done;
};

Sheet *standing(const QWidget &over)
{
    return static_cast<Sheet *>(over.findChild<QWidget *>(sheetName(), Qt::FindDirectChildrenOnly));
}

}

void Prompt::ask(QWidget *over, const Request &request,
                 std::function<void(std::optional<QString>)> done)
{
    Sheet *sheet = standing(*over);
    if (!sheet) {
        sheet = new Sheet(over, request, std::move(done));
        sheet->select(request.selectionLength);
    }
    sheet->takeKeyboard();
}

bool Prompt::stands(const QWidget &over)
{
    return standing(over) != nullptr;
}
