#include "ui/parts/Accessibility.h"
#include "support/UiTest.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QStandardPaths>

// The window as a screen reader finds it: over the accessibility bus, by the protocol that screen readers speak.

namespace parcelory::test {
namespace {

const QString registry = u"org.a11y.atspi.Registry"_s, accessible = u"org.a11y.atspi.Accessible"_s;
const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;

/// A widget on the bus.
struct Place {
    QString service, path;
};

struct Found {
    QString role, name, text;
};

/// A screen reader's connection. The window answers in this process, so no call may block.
class Reader : public QObject {
    Q_OBJECT
public:
    Reader()
    {
        const QDBusReply<QString> address =
            QDBusInterface(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s).call(u"GetAddress"_s);
        m_bus = QDBusConnection::connectToBus(address.value(), u"reader"_s);
    }
    bool isConnected() const { return m_bus.isConnected(); }

    /// Before the window exists: it sends only what a reader has asked for.
    void listen()
    {
        QDBusInterface events(registry, u"/org/a11y/atspi/registry"_s, registry, m_bus);
        for (const QString &event : {u"object:property-change:accessible-name"_s, u"object:state-changed:showing"_s}) {
            if (events.call(u"RegisterEvent"_s, event, QStringList(), QString()).type() == QDBusMessage::ErrorMessage)
                events.call(u"RegisterEvent"_s, event);
        }
        for (const QString &signal : {u"PropertyChange"_s, u"StateChanged"_s})
            m_bus.connect({}, {}, u"org.a11y.atspi.Event.Object"_s, signal, this, SLOT(hear(QDBusMessage)));
    }
    QList<QVariant> ask(const Place &place, const QString &interface, const QString &method,
                        const QList<QVariant> &arguments = {})
    {
        QDBusMessage call = QDBusMessage::createMethodCall(place.service, place.path, interface, method);
        call.setArguments(arguments);
        const QDBusPendingCallWatcher pending(m_bus.asyncCall(call)); // its end wakes the event loop
        runUntil([&pending] { return pending.isFinished(); });
        return pending.reply().arguments();
    }
    QString property(const Place &place, const QString &interface, const QString &name)
    {
        const auto answer = ask(place, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
        return answer.value(0).value<QDBusVariant>().variant().toString();
    }
    QList<Place> children(const Place &place)
    {
        QList<Place> found;
        const auto answer = ask(place, accessible, u"GetChildren"_s);
        if (answer.isEmpty())
            return found;
        const auto list = answer.first().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            Place child;
            QDBusObjectPath path;
            list.beginStructure();
            list >> child.service >> path;
            list.endStructure();
            child.path = path.path();
            found.append(child);
        }
        list.endArray();
        return found;
    }
    /// Everything below, with the text that a control shows.
    QList<Found> everything(const Place &place)
    {
        const QString role = ask(place, accessible, u"GetRoleName"_s).value(0).toString();
        QList<Found> all = {{role, property(place, accessible, u"Name"_s), {}}};
        if (role == u"combo box")
            all.first().text = ask(place, u"org.a11y.atspi.Text"_s, u"GetText"_s, {0, -1}).value(0).toString();
        for (const Place &child : children(place))
            all += everything(child);
        return all;
    }
    QList<Found> program()
    {
        QList<Found> all;
        for (const Place &application : children({registry, rootPath}))
            all += everything(application);
        return all;
    }

    QList<std::pair<QString, Place>> heard; ///< the kind of the event, and where

private slots:
    void hear(const QDBusMessage &event)
    {
        heard.append({event.member() + u' ' + event.arguments().value(0).toString(), {event.service(), event.path()}});
    }

private:
    QDBusConnection m_bus{u"none"_s};
};

Reader *reader = nullptr;

TEST(ScreenReader, FindsEveryControlWithItsNameRoleAndValue)
{
    WindowDesk desk;
    desk.compose(homeAddress());
    const QList<Found> all = reader->program();
    for (const Json &row : table(u"screen-reader"_s, "controls")) // role, name, text
        EXPECT_TRUE(std::ranges::any_of(all, [&row](const Found &found) {
            return found.role == text(row[0]) && found.name == text(row[1]) && found.text == text(row[2]);
        })) << row;
}

TEST(ScreenReader, HearsABannerAndNothingWhileNothingChanges)
{
    WindowDesk desk;
    const auto hears = [](const QString &kind, const QString &name) {
        for (const auto &[event, place] : QList(reader->heard)) {
            if (event == kind && reader->property(place, accessible, u"Name"_s) == name)
                return true;
        }
        return false;
    };
    // The copy of the day, which the program makes at its start, changes a name.
    runUntil([&] { return desk.program->screens().records.lastGood().has_value(); });
    desk.settleAll();
    const QString text = u"Scanner heard “x” — not an invoice QR."_s;
    reader->heard.clear();
    desk.app().failScan(text);
    desk.settleAll();
    runUntil([&] { return hears(u"StateChanged showing"_s, text); });
    EXPECT_TRUE(hears(u"PropertyChange accessible-name"_s, text));

    desk.label().busy = true; // the views refresh, and show the same
    desk.settleAll();
    desk.label().busy = false;
    desk.settleAll();
    reader->ask({registry, rootPath}, accessible, u"GetRoleName"_s); // what was sent before has arrived
    reader->heard.clear();
    desk.app().scanNote = u"x"_s;
    desk.app().scanNote = QString();
    desk.settleAll();
    reader->ask({registry, rootPath}, accessible, u"GetRoleName"_s);
    for (const auto &[event, place] : QList(reader->heard)) {
        if (event.contains(u"name"))
            ADD_FAILURE() << reader->property(place, accessible, u"Name"_s).toStdString();
    }
}

} // namespace
} // namespace parcelory::test

int main(int argc, char **argv)
{
    QStandardPaths::setTestModeEnabled(true);
    testing::InitGoogleMock(&argc, argv);
    parcelory::test::Reader reader;
    if (!reader.isConnected()) {
        std::puts("skipped: the accessibility bus does not answer");
        return 77;
    }
    reader.listen();
    parcelory::test::reader = &reader;
    QApplication app(argc, argv);
    parcelory::Theme::install(false);
    parcelory::installAccessibility();
    return RUN_ALL_TESTS();
}

#include "AccessibilityTest.moc"
