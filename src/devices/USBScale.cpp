#include "devices/USBScale.h"

#include "core/ports/HidSource.h"
#include "devices/ScaleReport.h"

#include <QProperty>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Observers see no field before all fields have changed.
struct OneChange {
    OneChange() { Qt::beginPropertyUpdateGroup(); }
    ~OneChange() { Qt::endPropertyUpdateGroup(); }
};

} // namespace

USBScale::USBScale(HidSource &hid) : m_hid(hid)
{
    start();
}

USBScale::~USBScale()
{
    m_hid.stop();
}

void USBScale::start()
{
    if (m_started)
        return;
    m_started = true;
    m_hid.start({.attached = [this](int device, const QString &product) { attached(device, product); },
                 .removed = [this](int device) { removed(device); },
                 .report = [this](int device, const QByteArray &bytes) { reported(device, bytes); }});
}

QString USBScale::display() const
{
    return scaleDisplay(connected, ounces);
}

std::optional<USBScale::Reading> USBScale::reading() const
{
    const Device *device = inUse();
    const std::optional<double> settled = device ? device->plate.settled() : std::nullopt;
    return settled ? std::optional(Reading{*settled, device->generation}) : std::nullopt;
}

void USBScale::attached(int number, const QString &product)
{
    const OneChange change;
    const QString name = product.isEmpty() ? u"USB Scale"_s : product;
    // A loose plug must not make the parcel on the plate look like a new parcel.
    Device device = m_unplugged.take(name);
    device.number = number;
    device.name = name;
    m_devices.push_back(device);
    if (ounces.value().value_or(0) <= 0) // keep showing a parcel that is being weighed
        use(device);
}

void USBScale::removed(int number)
{
    const OneChange change;
    const auto gone = std::ranges::find(m_devices, number, &Device::number);
    if (gone == m_devices.end())
        return;
    gone->plate.disconnect();
    gone->last.reset();
    m_unplugged.insert(gone->name, *gone);
    m_devices.erase(gone);
    if (m_inUse != number)
        return;
    if (!m_devices.empty()) {
        use(m_devices.back());
        return;
    }
    m_inUse.reset();
    connected = false;
    ounces = std::nullopt;
    deviceName = QString();
    fault = QString();
}

void USBScale::reported(int number, const QByteArray &bytes)
{
    const OneChange change;
    const auto device = std::ranges::find(m_devices, number, &Device::number);
    const std::optional<ScaleReport> report = parseScaleReport(bytes);
    if (device == m_devices.end() || !report)
        return;
    const bool somethingNew = device->plate.take(*report);
    if (somethingNew)
        device->generation = ++m_generation;
    device->last = report;
    if (m_inUse == number)
        show(*report);
    else if (somethingNew)
        use(*device);
}

void USBScale::use(const Device &device)
{
    m_inUse = device.number;
    if (!device.plate.settled())
        ounces = std::nullopt; // the old value is the other scale's
    fault = QString();
    deviceName = device.name;
    connected = true;
    if (device.last)
        show(*device.last);
}

void USBScale::show(const ScaleReport &report)
{
    fault = scaleFault(report);
    if (report.status == ScaleStatus::stable && report.ounces)
        ounces = report.ounces;
    else if (report.status == ScaleStatus::zero || report.status == ScaleStatus::underZero)
        ounces = 0;
    stable = report.status == ScaleStatus::zero || report.status == ScaleStatus::stable;
}

const USBScale::Device *USBScale::inUse() const
{
    const auto found = std::ranges::find_if(m_devices, [this](const Device &d) { return m_inUse == d.number; });
    return found == m_devices.end() ? nullptr : &*found;
}

} // namespace parcelory
