#include "views/AccessibleRole.h"

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
