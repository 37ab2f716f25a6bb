#include "app/support/SupportFacts.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Sqlite.h"
#include "core/ports/Preferences.h"
#include "devices/PrinterState.h"
#include "records/RecordCopies.h"

#include <QFileInfo>
#include <QStorageInfo>
#include <QSysInfo>

#include <algorithm>
#include <optional>

namespace parcelory::SupportFacts {
using namespace Qt::StringLiterals;

namespace {

class Lines {
public:
    Lines &add(const QString &name, const QString &value)
    {
        m_text += name + u": "_s + value + u'\n';
        return *this;
    }
    Lines &add(const QString &name, qint64 number) { return add(name, QString::number(number)); }
    QByteArray bytes() const { return m_text.toUtf8(); }

private:
    QString m_text;
};

QString yesOrNo(bool is)
{
    return is ? u"yes"_s : u"no"_s;
}

QString wordOf(PrinterTrouble trouble)
{
    switch (trouble) {
    case PrinterTrouble::none:
        return u"no trouble"_s;
    case PrinterTrouble::noPrintSystem:
        return u"no print system"_s;
    case PrinterTrouble::unknownQueue:
        return u"unknown queue"_s;
    case PrinterTrouble::paused:
        return u"paused"_s;
    case PrinterTrouble::refusing:
        return u"refuses jobs"_s;
    case PrinterTrouble::held:
        return u"jobs held"_s;
    case PrinterTrouble::outOfLabels:
        return u"out of labels"_s;
    case PrinterTrouble::open:
        return u"open"_s;
    case PrinterTrouble::ribbon:
        return u"ribbon"_s;
    case PrinterTrouble::jammed:
        return u"jammed"_s;
    case PrinterTrouble::inUse:
        return u"in use"_s;
    case PrinterTrouble::offline:
        break;
    }
    return u"offline"_s;
}

/// What a name of a queue is called here.
QString aliasOf(const QStringList &queues, const QString &queue)
{
    if (queue.isEmpty())
        return u"none"_s;
    const qsizetype place = queues.indexOf(queue);
    return place < 0 ? u"a queue that is not listed"_s : u"queue %1"_s.arg(place + 1);
}

QString countOf(const AppState &app)
{
    const auto rows = app.log.read<qint64>([](const Database &db) -> std::optional<qint64> {
        Statement count(db, "SELECT count(*) FROM shipments");
        return count.step() ? std::optional(count.integer(0)) : std::nullopt;
    });
    return rows.isRead() ? QString::number(rows.valueOr(0)) : u"could not be read"_s;
}

} // namespace

QByteArray about(const AppState &app, const QString &version, const QDateTime &now)
{
    constexpr qint64 megabyte = 1 << 20;
    const QStorageInfo disk(app.platform.dataFolder.absolutePath());
    return Lines()
        .add(u"Parcelory"_s, version)
        .add(u"Practice desk"_s, yesOrNo(app.platform.practice))
        .add(u"Saved"_s, now.toUTC().toString(Qt::ISODate))
        .add(u"System"_s, QSysInfo::prettyProductName())
        .add(u"Kernel"_s, QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion())
        .add(u"Processor"_s, QSysInfo::currentCpuArchitecture())
        .add(u"Qt"_s, QString::fromLatin1(qVersion()))
        .add(u"Free megabytes"_s, disk.bytesAvailable() / megabyte)
        .bytes();
}

QByteArray settings(const Preferences &stored)
{
    Lines lines;
    for (const Setting<bool> *setting :
         {&settings::rotate180, &settings::desklineRemember, &settings::showAddressSidebar,
          &settings::labelWindowUpright, &settings::asksForTracking, &settings::spendGuardOn,
          &settings::spendGuardNamesCheaper, &settings::spendGuardWantsReference})
        lines.add(setting->key, yesOrNo(read(stored, *setting)));
    for (const Setting<QString> *setting :
         {&settings::zebraQueue, &settings::documentQueue, &settings::shippoActiveKeyName, &settings::copiesFolder,
          &settings::senderFallbackEmail, &settings::senderFallbackPhone, &settings::signInName})
        lines.add(setting->key, read(stored, *setting).isEmpty() ? u"not set"_s : u"set"_s);
    for (const Setting<QStringList> *setting :
         {&settings::turnedQueues, &settings::shippoKeyNames, &settings::mailpieceByWeight, &settings::customsSigners,
          &settings::rulesOff})
        lines.add(setting->key, read(stored, *setting).size());
    return lines.bytes();
}

QByteArray records(const AppState &app, const Counts &counts)
{
    Lines lines;
    lines.add(u"Labels"_s, countOf(app))
        .add(u"Addresses"_s, counts.addresses)
        .add(u"Sender profiles"_s, counts.senders)
        .add(u"Boxes"_s, counts.boxes)
        .add(u"Unresolved purchases"_s, counts.unresolved)
        .add(u"Test keys"_s, counts.testKeys)
        .add(u"Live keys"_s, counts.liveKeys);
    const QList<RecordCopy> copies = app.copies.list();
    const auto isGood = [](const RecordCopy &copy) { return copy.isGood(); };
    const auto newest = std::ranges::find_if(copies, isGood);
    lines.add(u"Copies"_s, copies.size())
        .add(u"Good copies"_s, std::ranges::count_if(copies, isGood))
        .add(u"Newest good copy"_s, newest == copies.end() ? u"none"_s : newest->madeAt.toUTC().toString(Qt::ISODate));
    for (const QString &name :
         {u"mailing_log.sqlite"_s, u"purchase_journal.sqlite"_s, u"addresses.sqlite"_s, u"sender_profiles.json"_s,
          u"box_profiles.json"_s, u"label_draft.json"_s, u"error_log.json"_s})
        lines.add(u"Bytes of "_s + name, QFileInfo(app.platform.dataFolder.filePath(name)).size());
    return lines.bytes();
}

QByteArray printers(AppState &app)
{
    Lines lines;
    LabelPrinter::Queues queues;
    try {
        queues = app.printer.listQueues();
    } catch (const AppError &) {
        lines.add(u"Queues"_s, u"not listed"_s);
    }
    const Preferences &stored = app.platform.preferences;
    lines.add(u"Label printer"_s, aliasOf(queues.all, read(stored, settings::zebraQueue)))
        .add(u"Document printer"_s, aliasOf(queues.all, read(stored, settings::documentQueue)));
    for (const QString &queue : queues.all) {
        const PrinterReport report = app.printer.queueReport(queue);
        lines.add(aliasOf(queues.all, queue),
                  u"%1, %2, %3 jobs waiting"_s.arg(queues.zebras.contains(queue) ? u"label printer"_s : u"other"_s,
                                                   report.readable ? wordOf(report.trouble) : u"no answer"_s,
                                                   QString::number(report.waiting)));
    }
    return lines.bytes();
}

} // namespace parcelory::SupportFacts
