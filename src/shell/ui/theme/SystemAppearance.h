#pragma once

#include <QObject>

class QDBusVariant;

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

private slots:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void askPortal();
    void take(uint scheme);
};

} // namespace parcelory
