#pragma once

#include "core/ports/Clock.h"
#include "core/ports/HidSource.h"
#include "devices/ScaleReport.h"

#include <optional>

namespace parcelory {

/// The practice desk's scale: holds the weight that the clerk chooses and sends the reports of a real scale.
class PracticeScale : public HidSource {
public:
    static constexpr double capacity = 70 * 16; ///< ounces
    static constexpr std::chrono::milliseconds settling{700};

    explicit PracticeScale(Clock &clock) : m_clock(clock) {}
    ~PracticeScale() override { stop(); }

    void start(Listener listener) override;
    void stop() override;

    /// Replaces the parcel on the plate with a parcel of this weight; 0 empties the plate. More than the capacity is an
    /// overload.
    void put(double ounces);
    void plug();
    void unplug();

private:
    void attach();
    void send(ScaleStatus status, double ounces);
    void sendSettled();
    void cancelSettling();

    Clock &m_clock;
    Listener m_listener;
    bool m_plugged = true;
    int m_device = 0;
    double m_ounces = 0;
    std::optional<quint64> m_settling;
};

} // namespace parcelory
