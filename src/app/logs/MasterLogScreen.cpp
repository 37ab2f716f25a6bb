#include "app/logs/MasterLogScreen.h"

#include "app/AppState.h"
#include "app/logs/TrackPage.h"
#include "carrier/CarrierWords.h"
#include "carrier/MasterEntry.h"
#include "carrier/PagedList.h"
#include "core/Accents.h"
#include "core/AppError.h"
#include "core/Csv.h"
#include "core/SaveFile.h"
#include "core/Task.h"
#include "core/Text.h"
#include "shell/ErrorLog.h"

#include <QFileInfo>
#include <QLocale>
#include <QScopeGuard>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <tuple>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool counts(const MasterEntry &entry)
{
    return transactionStatusFrom(entry.status) == TransactionStatus::success;
}

/// What the search looks for, without regard to case, accents and the blanks of a number.
struct Sought {
    explicit Sought(const QString &search) : words(plainForm(search.simplified())), number(QString(words).remove(u' '))
    {
    }
    bool isIn(const MasterEntry &entry) const
    {
        const QStringList texts = {entry.recipient, entry.company, entry.place,
                                   entry.country,   entry.service, statusDisplay(entry.status)};
        return words.isEmpty() || plainForm(entry.tracking).contains(number) ||
               plainForm(texts.join(u'\n')).contains(words);
    }

    QString words, number;
};

/// What the totals leave out; empty if they are complete.
QString gapsIn(const QList<MasterEntry> &entries, bool isCut)
{
    const auto unknown =
        std::ranges::count_if(entries, [](const MasterEntry &entry) { return counts(entry) && entry.amount == 0; });
    QStringList gaps;
    if (isCut)
        gaps += u"Only the newest labels of the account were loaded. Older labels may be missing."_s;
    if (unknown > 0)
        gaps += unknown == 1 ? u"1 label has no known postage and counts as $0.00."_s
                             : u"%1 labels have no known postage and count as $0.00."_s.arg(unknown);
    return gaps.join(u' ');
}

} // namespace

MasterLogScreen::MasterLogScreen(AppState &app, const KeysScreen &keys) : m_app(app), m_keys(keys)
{
    buildOn(app, keys);
    lastFifteenDays();
    const auto otherRange = [this] { loaded = false; };
    m_notifiers.push_back(from.addNotifier(otherRange));
    m_notifiers.push_back(to.addNotifier(otherRange));
    m_notifiers.push_back(app.keyChanges.addNotifier([this] { // the new key may belong to another account
        selected = std::nullopt;
        entries = QList<MasterEntry>();
        loaded = false;
    }));
}

bool MasterLogScreen::canLoad() const
{
    return !hasNoKey() && m_keys.mode != PostageMode::unknown && !busy;
}

void MasterLogScreen::loadForKey()
{
    if (!canLoad() || m_loadedKeys == m_app.keyChanges)
        return;
    if (!m_loadedKeys)
        lastFifteenDays(); // the program may have been open for days
    m_loadedKeys = m_app.keyChanges;
    spawn([this] { return load(); });
}

Task<> MasterLogScreen::showEntry(QDate day, QString id)
{
    if (busy)
        co_return;
    m_loadedKeys = m_app.keyChanges; // the screen loads nothing else by itself
    search = QString();
    from = day;
    to = day;
    co_await load();
    selected = id;
}

void MasterLogScreen::lastFifteenDays()
{
    const QDate today = m_app.platform.clock.now().date();
    to = today;
    from = today.addDays(1 - usualDays);
}

Task<> MasterLogScreen::load()
{
    if (busy)
        co_return;
    if (from.value() > to.value()) {
        say(u"The From date is after the To date."_s, true);
        co_return;
    }
    busy = true;
    pages = 0;
    say(QString());
    const auto done = qScopeGuard([this] { busy = false; });
    const std::tuple asked(from.value(), to.value(), m_app.keyChanges.value());
    try {
        const auto listing = std::make_shared<Listing>();
        listing->onPage = [this] {
            pages = pages + 1;
            say(QString());
        };
        listing->onWait = [this](std::chrono::seconds pause) {
            say(u"Shippo is busy — the list continues in %1 s."_s.arg(pause.count()));
        };
        const QList<MasterEntry> found = co_await m_app.shippo.masterLog(from, to, listing);
        if (asked != std::tuple(from.value(), to.value(), m_app.keyChanges.value()))
            co_return; // the screen shows other days or another account by now
        selected = std::nullopt;
        entries = found;
        loaded = true;
        say(gapsIn(found, listing->isCut));
    } catch (const AppError &error) {
        say(m_app.recorded(u"Master Log"_s, error, Popup::no), true);
    }
}

void MasterLogScreen::say(const QString &text, bool failure)
{
    isFailure = failure;
    message = text;
}

QString MasterLogScreen::summaryLine() const
{
    double dollars = 0;
    qsizetype count = 0;
    for (const MasterEntry &entry : entries.value()) {
        if (!counts(entry))
            continue;
        ++count;
        dollars += entry.amount;
    }
    return QString::number(count) + u" shipments • $"_s + fixed(dollars, 2) + u" postage"_s;
}

QList<MasterEntry> MasterLogScreen::found() const
{
    const Sought sought(search);
    if (sought.words.isEmpty())
        return entries;
    QList<MasterEntry> rows;
    std::ranges::copy_if(entries.value(), std::back_inserter(rows),
                         [&sought](const MasterEntry &entry) { return sought.isIn(entry); });
    return rows;
}

QString MasterLogScreen::foundText() const
{
    const qsizetype count = entries.value().size();
    if (search.value().trimmed().isEmpty() || count == 0)
        return {};
    return u"%1 of %2 %3"_s.arg(QString::number(found().size()), QString::number(count),
                                count == 1 ? u"shipment"_s : u"shipments"_s);
}

std::optional<MasterEntry> MasterLogScreen::selectedEntry() const
{
    const auto &all = entries.value();
    const auto found =
        std::ranges::find_if(all, [this](const MasterEntry &entry) { return entry.id == selected.value(); });
    return found != all.end() && Sought(search).isIn(*found) ? std::optional(*found) : std::nullopt;
}

QString masterLogCSV(const QList<MasterEntry> &entries)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    QString text = u"Date,Time,Recipient,Company,City/State,Country,Service,Postage,Tracking,Status,Test\n"_s;
    for (const MasterEntry &entry : entries) {
        const QDateTime date = entry.date.value_or(QDateTime());
        text += csvRow({english.toString(date, u"MM/dd/yy"_s), english.toString(date, u"h:mm AP"_s), entry.recipient,
                        entry.company, entry.place, entry.country, entry.service, fixed(entry.amount, 2),
                        entry.tracking, statusDisplay(entry.status), entry.test ? u"TEST"_s : QString()}) +
                u'\n';
    }
    return text;
}

Task<> MasterLogScreen::exportCSV()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    const QList<MasterEntry> rows = entries;
    const QString name = u"Parcelory Master Log %1.csv"_s.arg(to.value().toString(Qt::ISODate));
    const QString path = co_await m_app.platform.prompts.saveFile(u"Export Master Log"_s, name);
    if (path.isEmpty())
        co_return;
    try {
        co_await onPool([path, rows] { saveBytes(path, masterLogCSV(rows).toUtf8()); });
        say(u"Exported %1 rows to "_s.arg(rows.size()) + QFileInfo(path).fileName());
    } catch (const AppError &error) {
        say(u"Export failed: "_s + m_app.recorded(u"Master Log Export"_s, error, Popup::no), true);
    }
}

void MasterLogScreen::copyTracking(const MasterEntry &entry)
{
    if (entry.tracking.isEmpty())
        return;
    m_app.platform.desktop.copyText(entry.tracking);
    say(u"Copied tracking "_s + entry.tracking);
}

Task<> MasterLogScreen::trackOnline(MasterEntry entry)
{
    const QString failure = co_await openTrackingPage(m_app, entry.trackingURL);
    say(failure, !failure.isEmpty());
}

} // namespace parcelory
