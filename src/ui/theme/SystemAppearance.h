#pragma once

#include <QObject>

#ifndef Q_OS_MACOS
#include <QDBusMessage>
#endif

namespace parcelory {

/// Signals whether the system is in dark mode whenever that changes. On Linux the desktop portal reports it, at the
/// start as well; without a portal, the system's palette at the start decides.
class SystemAppearance : public QObject {
    Q_OBJECT
public:
    SystemAppearance();

    /// Call before the program sets its own palette.
    static bool paletteIsDark();

signals:
    void darkChanged(bool dark);

#ifndef Q_OS_MACOS
private slots:
    void settingChanged(const QDBusMessage &news); // only this signature accepts values of any type

private:
    void askPortal();
    void take(uint scheme);
#endif
};

} // namespace parcelory
