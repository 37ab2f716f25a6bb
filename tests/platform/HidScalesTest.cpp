// Scales through the real library, on devices emulated by umockdev. Needs its wrapper.

#include "platform/HidScales.h"
#include "devices/USBScale.h"
#include "support/RunTask.h"
#include "support/Test.h"

#undef signals
#include <umockdev.h>

#include <fcntl.h>
#include <unistd.h>

namespace parcelory::test {
namespace {

/// Report descriptors. The scale has a data report with id 3: status, unit, exponent, weight.
const QString scaleKind = u"058D0920A1010932A1028503750895010970A10215012508097109720973097409750976097709788100C0"
                          "0950A1021501250C095109520953095409550956095709580959095A095B095C8100C009411581257F810209"
                          "40150027FFFF000075108102C0C0"_s;
const QString mouseKind = u"05010902A1010901A100050919012903150025019503750181020501C0C0"_s;

QByteArray rootOf(UMockdevTestbed *bed)
{
    char *path = umockdev_testbed_get_root_dir(bed);
    const QByteArray root(path);
    g_free(path);
    return root;
}

/// A plugged-in USB device. Each device needs a new number, because the testbed never frees a number.
class MockDevice {
public:
    MockDevice(UMockdevTestbed *bed, int number, const QString &product, const QString &kind)
        : m_bed(bed), m_root(rootOf(bed)), m_number(QString::number(number)),
          m_usb(u"/devices/pci0000:00/0000:00:14.0/usb1/1-%1"_s.arg(m_number)),
          m_port(u"%1/1-%2:1.0"_s.arg(m_usb, m_number)), m_hid(m_port + u"/0003:0922:8009.000"_s + m_number),
          m_raw(m_hid + u"/hidraw/hidraw"_s + m_number)
    {
        const QString name = product.isEmpty() ? QString() : u"A: product=%1\\n\n"_s.arg(product);
        const QByteArray node = "/dev/hidraw" + m_number.toUtf8(), ioctls = m_root + "/ioctls" + m_number.toUtf8();
        // Before the device is added, because it may be opened immediately.
        QFile file(QString::fromUtf8(ioctls));
        check(file.open(QIODevice::WriteOnly));
        file.write("@DEV " + node + "\nHIDIOCGRDESCSIZE 0 " + QByteArray(1, char(kind.size() / 2)).toHex() +
                   "000000\n");
        file.close();
        check(umockdev_testbed_load_ioctl(m_bed, node, ioctls, &m_error));
        const QString device = QString::fromUtf8(dataFile(u"usb-device.umockdev"_s))
                                   .arg(m_usb, name, m_port, m_hid, m_number, kind, m_raw);
        check(umockdev_testbed_add_from_string(m_bed, qUtf8Printable(device), &m_error));
        m_line = umockdev_testbed_get_dev_fd(m_bed, node);
    }

    /// Reports sent in quick succession arrive as one report, unlike a real device's, so wait for each of them.
    void report(const char *hex)
    {
        const QByteArray bytes = QByteArray::fromHex(hex);
        check(write(m_line, bytes.constData(), bytes.size()) == bytes.size());
    }

    void unplug()
    {
        const QByteArray line = QByteArray(ptsname(m_line)).replace('/', '_');
        QFile::remove(QString::fromUtf8(m_root + "/dev/.ptymap/" + line)); // the next device may reuse the line
        const int nowhere = ::open("/dev/null", O_RDWR);
        dup2(nowhere, m_line); // hangs up
        close(nowhere);
        for (const QString &path : {m_raw, m_hid, m_port, m_usb})
            umockdev_testbed_remove_device(m_bed, qUtf8Printable(u"/sys"_s + path));
    }

private:
    void check(bool good) const
    {
        if (!good)
            qFatal("mocking failed: %s", m_error ? m_error->message : "no details");
    }

    UMockdevTestbed *m_bed;
    QByteArray m_root;
    QString m_number, m_usb, m_port, m_hid, m_raw;
    GError *m_error = nullptr;
    int m_line = -1;
};

} // namespace

TEST(HidScales, ArePluggedInAndUnpluggedRepeatedly)
{
    UMockdevTestbed *bed = umockdev_testbed_new();
    if (!umockdev_in_mock_environment())
        GTEST_SKIP() << "runs under umockdev-wrapper only";
    HidScales source(std::chrono::milliseconds(50));
    USBScale scale(source);
    const auto waitFor = [&scale](const QString &name, const QString &display) {
        runUntil([&] { return scale.deviceName == name && scale.display() == display; });
    };
    MockDevice mouse(bed, 1, u"Mouse"_s, mouseKind);
    MockDevice small(bed, 2, u"DYMO 10 lb Scale"_s, scaleKind);
    waitFor(u"DYMO 10 lb Scale"_s, u"—"_s);
    small.report("03040BFF7800");
    waitFor(u"DYMO 10 lb Scale"_s, u"12.0 oz"_s);
    small.report("03030BFF5000");
    runUntil([&] { return !scale.stable; });
    small.unplug(); // while it is weighing
    waitFor({}, u"No scale"_s);

    MockDevice again(bed, 3, {}, scaleKind);
    waitFor(u"USB Scale"_s, u"—"_s);
    again.report("03040BFF2C01");
    waitFor(u"USB Scale"_s, u"1 lb 14.0 oz"_s);
    MockDevice large(bed, 4, u"Large"_s, scaleKind);
    large.report("03040C000500");
    waitFor(u"Large"_s, u"5 lb 0.0 oz"_s);
    large.unplug();
    waitFor(u"USB Scale"_s, u"1 lb 14.0 oz"_s);

    again.report("03020BFF0000");
    source.stop();
    settle();
    EXPECT_EQ(scale.display(), u"1 lb 14.0 oz"_s) << "a stopped source reports nothing";
    g_object_unref(bed);
}

} // namespace parcelory::test
