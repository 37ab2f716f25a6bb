#pragma once

#include "core/ports/Clock.h"

#include <QTimer>

#include <map>
#include <memory>

namespace parcelory {

class SystemClock : public Clock {
public:
    QDateTime now() const override { return QDateTime::currentDateTime(); }
    quint64 after(Duration delay, std::function<void()> action) override;
    void cancel(quint64 timer) override { m_timers.erase(timer); }

private:
    quint64 m_lastTimer = 0;
    std::map<quint64, std::unique_ptr<QTimer, QScopedPointerDeleteLater>> m_timers;
};

} // namespace parcelory
