#include "ui/parts/Accessibility.h"

#include "ui/parts/ComboBox.h"

#include <QAccessibleWidget>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const char *const roleProperty = "accessibleRole";

/// Qt's own interface of a combo box takes its value for its name on Linux. Here the name is the name, and the value is
/// the text.
class AccessibleComboBox : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit AccessibleComboBox(ComboBox *box) : QAccessibleWidget(box, QAccessible::ComboBox), m_box(box) {}

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? m_box->shownText() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.hasPopup = true;
        state.readOnly = true;
        return state;
    }
    QStringList actionNames() const override { return {showMenuAction()}; }
    void doAction(const QString &) override { m_box->showPopup(); }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                                  : QAccessibleWidget::interface_cast(type);
    }

    void selection(int, int *start, int *end) const override { *start = *end = 0; }
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    QString text(int start, int end) const override { return m_box->shownText().mid(start, end - start); }
    int characterCount() const override { return int(m_box->shownText().size()); }
    QRect characterRect(int) const override { return rect(); }
    int offsetAtPoint(const QPoint &) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int *start, int *end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    ComboBox *m_box;
};

QAccessibleInterface *interfaceOf(const QString &, QObject *object)
{
    if (auto *box = dynamic_cast<ComboBox *>(object))
        return new AccessibleComboBox(box);
    const QVariant role = object->property(roleProperty);
    auto *widget = qobject_cast<QWidget *>(object);
    return widget && role.isValid() ? new QAccessibleWidget(widget, QAccessible::Role(role.toInt())) : nullptr;
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(&interfaceOf);
}

void setAccessibleRole(QWidget *widget, QAccessible::Role role)
{
    widget->setProperty(roleProperty, int(role));
}

void nameWidget(QWidget *widget, const QString &name)
{
    if (widget->accessibleName() != name)
        widget->setAccessibleName(name);
}

void announce(QWidget *widget)
{
    for (const QAccessible::Event type : {QAccessible::Alert, QAccessible::NameChanged, QAccessible::ObjectShow}) {
        QAccessibleEvent event(widget, type);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace parcelory
