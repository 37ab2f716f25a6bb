#pragma once

#include "core/Observable.h"
#include "core/ports/HidSource.h"
#include "devices/ParcelDetector.h"

#include <QHash>

#include <vector>

namespace parcelory {

/// The USB postal scale. It is detected when it is plugged in and needs no configuration. Of several scales, the scale
/// with the newest parcel counts.
class USBScale : public Observable {
public:
    /// A settled weight on the plate.
    struct Reading {
        double ounces = 0;
        quint64 generation = 0; ///< higher for every later parcel; the same while it may be the same parcel
    };

    explicit USBScale(HidSource &hid); ///< listens at once
    ~USBScale();
    USBScale(const USBScale &) = delete;

    /// Starts to listen; does nothing if already started.
    void start();

    Observed<bool> connected{this, false};
    Observed<bool> stable{this, false};           ///< by the last report; stays when the scale is unplugged
    Observed<std::optional<double>> ounces{this}; ///< last usable weight, avoirdupois; absent: unknown
    Observed<QString> deviceName{this};
    Observed<QString> fault{this}; ///< why the scale cannot weigh, in the clerk's words; empty when it can

    QString display() const;
    /// The weight to buy a label with; absent while the plate is empty or moving, or the scale cannot weigh.
    std::optional<Reading> reading() const;
    /// The highest generation of any reading so far, on any scale.
    quint64 generation() const { return m_generation; }

private:
    struct Device {
        int number = 0;
        QString name;
        ParcelDetector plate;
        quint64 generation = 0;
        std::optional<ScaleReport> last;
    };

    void attached(int number, const QString &product);
    void removed(int number);
    void reported(int number, const QByteArray &bytes);
    void use(const Device &device);
    void show(const ScaleReport &report);
    const Device *inUse() const;

    HidSource &m_hid;
    bool m_started = false;
    std::vector<Device> m_devices; ///< in the order in which they were plugged in
    std::optional<int> m_inUse;
    QHash<QString, Device> m_unplugged; ///< by name
    quint64 m_generation = 0;
};

} // namespace parcelory
