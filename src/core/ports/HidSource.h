#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace parcelory {

/// The USB scales of this machine: every device with the HID usage page "Scale" (0x8D), also if plugged in later.
class HidSource {
public:
    /// Called on the main thread. `device` identifies a scale; a scale that is plugged in again gets a new number.
    struct Listener {
        std::function<void(int device, const QString &product)> attached; ///< the product name may be empty
        std::function<void(int device)> removed;
        std::function<void(int device, const QByteArray &bytes)> report; ///< repeated reports may be omitted
    };

    virtual ~HidSource() = default;

    virtual void start(Listener listener) = 0;
    /// Stops calling the listener.
    virtual void stop() = 0;
};

} // namespace parcelory
