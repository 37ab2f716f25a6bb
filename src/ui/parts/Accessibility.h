#pragma once

#include <QAccessible>
#include <QWidget>

namespace parcelory {

/// Makes a screen reader announce the accessible name of `widget` now.
inline void announce(QWidget *widget)
{
    QAccessibleEvent alert(widget, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

/// Enables or disables a control. If a disabled control had the focus, `refuge` takes it; otherwise the next control
/// would, and the same key pressed again would activate that control.
inline void enable(QWidget *control, bool enabled, QWidget *refuge)
{
    if (!enabled && control->window()->focusWidget() == control)
        refuge->setFocus();
    control->setEnabled(enabled);
}

} // namespace parcelory
