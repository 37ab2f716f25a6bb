#include "app/settings/SettingsScreen.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/Deployment.h"
#include "core/Setting.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Clock.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"
#include "records/BoxProfile.h"
#include "records/SenderProfile.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString testSent = u"Test sent — a small label should print. Nothing? The printer may be paused "
                         "(System Settings → Printers) or set to EPL language."_s;

/// Edits one record of a list that is written as a whole.
template <class Record>
void editIn(QProperty<QList<Record>> &records, const QUuid &id, const std::function<void(Record &)> &edit)
{
    QList<Record> all = records;
    const auto found = std::ranges::find(all, id, &Record::id);
    if (found == all.end())
        return;
    edit(*found);
    records = all;
}

QString quoted(const QString &name, const QString &otherwise)
{
    return name.isEmpty() ? otherwise : u'“' + name + u'”';
}

} // namespace

SettingsScreen::SettingsScreen(AppState &app) : testLabel(app), m_app(app)
{
    buildOn(app.senders, app.boxes, testLabel);
    const Preferences &stored = app.platform.preferences;
    const Deployment &company = app.platform.deployment;
    zebraQueue = read(stored, settings::zebraQueue);
    documentQueue = read(stored, settings::documentQueue);
    rotate180 = read(stored, settings::rotate180);
    showAddressSidebar = read(stored, settings::showAddressSidebar);
    fallbackEmail = read(stored, settings::senderFallbackEmail, company.fallbackEmail);
    fallbackPhone = read(stored, settings::senderFallbackPhone, company.fallbackPhone);
    store(zebraQueue, settings::zebraQueue);
    store(documentQueue, settings::documentQueue);
    store(rotate180, settings::rotate180);
    store(showAddressSidebar, settings::showAddressSidebar);
    store(fallbackEmail, settings::senderFallbackEmail);
    store(fallbackPhone, settings::senderFallbackPhone);
}

template <class T>
void SettingsScreen::store(QProperty<T> &property, const Setting<T> &setting)
{
    m_notifiers.push_back(property.addNotifier([this, &property, &setting] {
        write(m_app.platform.preferences, setting, property);
        spawn([this] { return checkStorage(); });
    }));
}

Task<> SettingsScreen::checkStorage()
{
    m_mustCheckStorage = true;
    if (m_isCheckingStorage) // one at a time: the disk may hang while the clerk types
        co_return;
    m_isCheckingStorage = true;
    const auto done = qScopeGuard([this] { m_isCheckingStorage = false; });
    Preferences &preferences = m_app.platform.preferences;
    while (std::exchange(m_mustCheckStorage, false)) {
        const QString now = m_app.platform.clock.now().toString(Qt::ISODate);
        write(preferences, settings::storageChecked, now); // shows a full disk
        const bool isStored = co_await onPool(preferences, &Preferences::synchronize);
        if (!isStored && !std::exchange(m_isStorageTold, true))
            m_app.recorded(u"Settings"_s, AppError(settings::notStored), Popup::yes);
    }
}

QStringList SettingsScreen::labelPrinterChoices() const
{
    return showAllPrinters || zebraQueues.value().isEmpty() ? queues : zebraQueues;
}

QString SettingsScreen::zebraHint() const
{
    return m_discovered && zebraQueues.value().isEmpty() ? u"— no Zebra detected —"_s : QString();
}

QString SettingsScreen::queueTitle(const QString &queue) const
{
    return m_discovered && !queues.value().contains(queue) ? queue + u" (not found)"_s : queue;
}

Task<> SettingsScreen::refreshPrinters()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    clearPrinterMessage();
    try {
        const LabelPrinter::Queues found = co_await onPool(m_app.printer, &LabelPrinter::listQueues);
        m_discovered = true;
        queues = found.all;
        zebraQueues = found.zebras;
        chooseZebraQueue();
    } catch (const AppError &error) {
        const QString reason = m_app.recorded(u"Printers"_s, error, Popup::no);
        printerMessage =
            PrinterMessage{u"The printer list can't be loaded, and your settings are unchanged — "_s + reason, false};
    }
}

void SettingsScreen::clearPrinterMessage()
{
    printerMessage = PrinterMessage{};
    testLabel.clear();
}

void SettingsScreen::chooseLabelQueue(const QString &queue)
{
    zebraQueue = queue;
    clearPrinterMessage(); // it may be about the queue before
}

void SettingsScreen::undoReplacement()
{
    if (const QString replaced = printerMessage.value().replacedQueue; !replaced.isEmpty())
        chooseLabelQueue(replaced);
}

/// Labels must go to a label printer: replaces any other queue with the first Zebra queue, and tells the clerk.
void SettingsScreen::chooseZebraQueue()
{
    const QString previous = zebraQueue;
    const QStringList &zebras = zebraQueues.value();
    if (!previous.isEmpty() && zebras.contains(previous))
        return;
    zebraQueue = zebras.value(0);
    if (previous.isEmpty())
        return;
    const QString now =
        zebras.isEmpty() ? u"no label printer is chosen now."_s : u"labels now print on “%1”."_s.arg(zebras.first());
    printerMessage =
        PrinterMessage{u"“%1” was not found among the Zebra printers — "_s.arg(previous) + now, false, previous};
}

Task<> SettingsScreen::printTest()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    clearPrinterMessage(); // first, so that an identical message is announced again
    const QString queue = zebraQueue;
    const auto sent = qScopeGuard([this, queue] { m_app.printWatch.follow(queue, Paper::label); });
    try {
        co_await onPool(m_app.printer, &LabelPrinter::printZPL, Zpl::testLabel, queue);
        printerMessage = PrinterMessage{testSent, true};
        ShipmentRecord test{.recipient = u"test label"_s, .testMode = true};
        test.zpl = Zpl::testLabel;
        testLabel.show(test);
    } catch (const AppError &error) {
        printerMessage = PrinterMessage{m_app.recorded(u"Print Test"_s, error, Popup::no), false};
    }
}

void SettingsScreen::editProfile(const QUuid &id, const std::function<void(SenderProfile &)> &edit)
{
    editIn(m_app.senders.profiles, id, edit);
}

void SettingsScreen::editBox(const QUuid &id, const std::function<void(BoxProfile &)> &edit)
{
    editIn(m_app.boxes.profiles, id, edit);
}

bool SettingsScreen::isDefaultProfile(const QUuid &id) const
{
    const std::optional<SenderProfile> chosen = m_app.senders.defaultProfile();
    return chosen && chosen->id == id;
}

Task<bool> SettingsScreen::confirmed(QString title, QString text, QString keep, QString remove)
{
    const Question question{.title = title, .text = text, .choices = {keep, remove}};
    const int answer = co_await m_app.platform.prompts.choose(question);
    co_return answer == 1;
}

Task<> SettingsScreen::removeProfile(QUuid id)
{
    const std::optional<SenderProfile> profile = m_app.senders.find(id);
    if (!profile || !canRemoveProfile())
        co_return;
    const bool sure = co_await confirmed(u"Delete %1?"_s.arg(quoted(profile->name, u"this profile"_s)),
                                         u"This deletes the return address. Labels already bought keep it."_s,
                                         u"Keep Profile"_s, u"Delete Profile"_s);
    if (!sure)
        co_return;
    const QList<SenderProfile> &all = m_app.senders.profiles.value();
    const auto place = std::ranges::find(all, id, &SenderProfile::id) - all.begin();
    const std::optional<SenderProfile> removed = m_app.senders.find(id); // the clerk may have taken time to answer
    const std::optional<QUuid> chosen = m_app.senders.defaultID;
    m_app.senders.remove(id);
    if (removed && !m_app.senders.find(id))
        m_app.lastChange.note(u"%1 is deleted."_s.arg(quoted(removed->name, u"The profile"_s)),
                              [&senders = m_app.senders, place, removed, chosen] {
                                  senders.insert(place, *removed);
                                  if (chosen == removed->id)
                                      senders.defaultID = chosen;
                              });
}

Task<> SettingsScreen::removeBox(QUuid id)
{
    const std::optional<BoxProfile> box = m_app.boxes.find(id);
    if (!box)
        co_return;
    const bool sure =
        co_await confirmed(u"Delete %1?"_s.arg(quoted(box->name, u"this box"_s)),
                           u"This removes the box from the Mailpiece menu."_s, u"Keep Box"_s, u"Delete Box"_s);
    if (!sure)
        co_return;
    const QList<BoxProfile> &all = m_app.boxes.profiles.value();
    const auto place = std::ranges::find(all, id, &BoxProfile::id) - all.begin();
    const std::optional<BoxProfile> removed = m_app.boxes.find(id); // the clerk may have taken time to answer
    m_app.boxes.remove(id);
    if (removed)
        m_app.lastChange.note(u"%1 is deleted."_s.arg(quoted(removed->name, u"The box"_s)),
                              [&boxes = m_app.boxes, place, removed] { boxes.insert(place, *removed); });
}

} // namespace parcelory
