#pragma once

#include <QObject>

#ifndef Q_OS_MACOS
#include <QDBusMessage>
#endif

namespace parcelory {

/// Whether the system shows itself dark, now and when it changes. On Linux the desktop portal tells; where nothing
/// does, the system's palette at the start decides.
class SystemAppearance : public QObject {
    Q_OBJECT
public:
    SystemAppearance();

    /// Call before a palette of one's own is set.
    static bool paletteIsDark();

signals:
    void darkChanged(bool dark);

#ifndef Q_OS_MACOS
private slots:
    void settingChanged(const QDBusMessage &news); // the one form that is called for a value of any type

private:
    void askPortal();
    void take(uint scheme);
#endif
};

} // namespace parcelory
