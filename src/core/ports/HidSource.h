#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace parcelory {

/// The USB scales of this machine: whatever shows the HID usage page "Scale" (0x8D), now or later.
class HidSource {
public:
    /// Called on the main thread. `device` tells scales apart; a scale that is plugged in again has another number.
    struct Listener {
        std::function<void(int device, const QString &product)> attached; ///< the product name may be empty
        std::function<void(int device)> removed;
        std::function<void(int device, const QByteArray &bytes)> report; ///< repetitions may be left out
    };

    virtual ~HidSource() = default;

    virtual void start(Listener listener) = 0;
    /// The listener is not called any more.
    virtual void stop() = 0;
};

} // namespace parcelory
