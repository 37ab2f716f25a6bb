#pragma once

#include <QAccessible>
#include <QWidget>

namespace parcelory {

/// Lets a screen reader say at once what `widget`, whose accessible name is the news, shows now.
inline void announce(QWidget *widget)
{
    QAccessibleEvent alert(widget, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

/// Enables a control or not. The keyboard of one that is disabled goes to `refuge`, and not to whatever comes next: the
/// same key pressed once more would press that.
inline void enable(QWidget *control, bool enabled, QWidget *refuge)
{
    if (!enabled && control->window()->focusWidget() == control)
        refuge->setFocus();
    control->setEnabled(enabled);
}

} // namespace parcelory
