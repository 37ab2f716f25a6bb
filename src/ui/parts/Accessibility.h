#pragma once

#include "ui/parts/TextLabel.h"

#include <QAccessible>
#include <QWidget>

namespace parcelory {

/// Makes known what setAccessibleRole() says, and what a ComboBox is. Once for each program.
void installAccessibility();
/// Tells screen readers what a plain widget is. Before it is first shown.
void setAccessibleRole(QWidget *widget, QAccessible::Role role);
/// Sets the name for screen readers. QWidget also reports an unchanged name, and a screen reader may speak it.
void nameWidget(QWidget *widget, const QString &name);
/// Makes a screen reader announce the accessible name of `widget` now. On Linux, screen readers hear that a widget of
/// the role Notification appears, and no other alert.
void announce(QWidget *widget);

/// Why an operation cannot start: its screen runs another operation.
inline const QString notWhileBusy = QStringLiteral("Wait until this is done.");

/// Enables or disables a control. If a disabled control had the focus, `refuge` takes it; otherwise the next control
/// would, and the same key pressed again would activate that control.
inline void enable(QWidget *control, bool enabled, QWidget *refuge)
{
    if (!enabled && control->window()->focusWidget() == control)
        refuge->setFocus();
    control->setEnabled(enabled);
}

/// Enables a control if there is no obstacle; otherwise its tooltip tells the obstacle.
inline void enableUnless(const QString &obstacle, QWidget *control, QWidget *refuge, const QString &toolTip = {})
{
    control->setToolTip(obstacle.isEmpty() ? toolTip : plainToolTip(obstacle));
    if (control->accessibleDescription() != obstacle)
        control->setAccessibleDescription(obstacle);
    enable(control, obstacle.isEmpty(), refuge);
}

} // namespace parcelory
