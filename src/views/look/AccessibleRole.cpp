#include "views/look/AccessibleRole.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

#include <utility>

namespace {

constexpr const char *property = "vantleAccessible";

struct Description
{
    QAccessible::Role role = QAccessible::Client;
    std::function<void()> press;
};

class AccessibleControl final : public QAccessibleWidget
{
public:
    AccessibleControl(QWidget *widget, Description description)
        : QAccessibleWidget(widget, description.role)
        , m_press(std::move(description.press))
    {
    }

    /// A button's name is its text, unless it has another.
    QString text(QAccessible::Text kind) const override
    {
        const QString text = QAccessibleWidget::text(kind);
        const auto *control = button();
        return kind == QAccessible::Name && text.isEmpty() && control ? control->text() : text;
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = role() == QAccessible::Dialog;
        state.hasPopup = role() == QAccessible::ButtonMenu;
        if (const auto *control = button(); control && role() == QAccessible::RadioButton) {
            state.checkable = true;
            state.checked = control->isChecked();
        }
        return state;
    }

    QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (m_press)
            names.prepend(pressAction());
        return names;
    }
    void doAction(const QString &name) override
    {
        if (name == pressAction() && m_press)
            m_press();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    const QAbstractButton *button() const { return qobject_cast<QAbstractButton *>(widget()); }

    std::function<void()> m_press;
};

QAccessibleInterface *accessibleControl(const QString &, QObject *object)
{
    const QVariant description = object->property(property);
    if (!description.isValid())
        return nullptr;
    return new AccessibleControl(static_cast<QWidget *>(object), description.value<Description>());
}

}

void setAccessibleRole(QWidget &widget, QAccessible::Role role, std::function<void()> press)
{
    [[maybe_unused]] static const bool installed
        = (QAccessible::installFactory(accessibleControl), true);
    widget.setProperty(property, QVariant::fromValue(Description { role, std::move(press) }));
}

void setTitle(QWidget &window, const QString &title)
{
    if (window.windowTitle() == title)
        return;
    window.setWindowTitle(title);
    QAccessibleEvent event(&window, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}
