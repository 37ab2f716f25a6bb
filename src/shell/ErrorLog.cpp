#include "shell/ErrorLog.h"

#include "core/AppError.h"
#include "core/ErrorDetail.h"
#include "core/Json.h"
#include "core/ListMerge.h"
#include "core/Platform.h"
#include "core/Task.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

ErrorLog *sharedInstance = nullptr;

using Entries = QList<APIErrorEntry>;

/// The newest first, and no more than the log keeps.
Entries inOrder(Entries entries)
{
    std::ranges::sort(entries, std::ranges::greater(), &APIErrorEntry::date);
    if (entries.size() > ErrorLog::capacity)
        entries.resize(ErrorLog::capacity);
    return entries;
}

Popup allowed(Popup asked, const std::exception &error)
{
    const auto *appError = dynamic_cast<const AppError *>(&error);
    return appError && appError->isInputError() ? Popup::no : asked;
}

} // namespace

ErrorLog &ErrorLog::shared()
{
    Q_ASSERT(sharedInstance);
    return *sharedInstance;
}

ErrorLog::ErrorLog(Platform &platform)
    : m_clock(platform.clock), m_prompts(platform.prompts), m_supportTelephone(platform.deployment.supportTelephone),
      m_file(platform.dataFolder.filePath(u"error_log.json"_s),
             [this](const QByteArray &base, const QByteArray &ours, const QByteArray &theirs) {
                 return merged(base, ours, theirs);
             })
{
    sharedInstance = this;
    const std::optional<QByteArray> saved = m_file.read();
    if (!saved)
        return;
    try {
        m_entries = decodeJson<QList<APIErrorEntry>>(*saved, Keys::asIs);
    } catch (const DecodeError &) {
        m_file.setAsideBeforeWrite();
    }
}

ErrorLog::~ErrorLog()
{
    m_isClosing = true;
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall); // entries of the event loop's last turn
    sharedInstance = nullptr;
}

void ErrorLog::record(QString context, const std::exception &error, Popup popup)
{
    const QString detail = detailOf(error);
    APIErrorEntry entry{QUuid::createUuid(), m_clock.now(), std::move(context),
                        detail.isEmpty() ? describe(error) : u"%1 (%2)"_s.arg(describe(error), detail)};
    QMetaObject::invokeMethod(
        this, [this, entry = std::move(entry), shown = allowed(popup, error)] { add(entry, shown); },
        Qt::QueuedConnection);
}

void ErrorLog::add(APIErrorEntry entry, Popup popup)
{
    m_entries.prepend(entry);
    if (m_entries.size() > capacity)
        m_entries.resize(capacity);
    save();
    emit entriesChanged();
    if (popup == Popup::no || m_isClosing)
        return;
    const QString title = u"Bad API response, contact Tobin: "_s + m_supportTelephone;
    const QString text = entry.context + u": "_s + entry.detail + u"\n\nFull history: Window ▸ Error Log"_s;
    if (isRepeated(text))
        return;
    m_alerts.append({title, text});
    if (m_alerts.size() == 1) // otherwise the running showAlerts() shows it next
        spawn([this] { return showAlerts(); });
}

/// True if an alert with this text was raised within the last minute; otherwise notes that it is raised now.
bool ErrorLog::isRepeated(const QString &text)
{
    constexpr qint64 pause = 60; // seconds
    const QDateTime now = m_clock.steadyNow();
    m_alertTimes.removeIf([&now](const auto &shown) { return shown.value().secsTo(now) >= pause; });
    if (m_alertTimes.contains(text))
        return true;
    m_alertTimes.insert(text, now);
    return false;
}

Task<> ErrorLog::showAlerts()
{
    while (!m_alerts.isEmpty()) {
        const auto [title, text] = m_alerts.first();
        co_await m_prompts.alert(title, text);
        m_alerts.removeFirst();
    }
}

void ErrorLog::clear()
{
    m_entries.clear();
    save();
    emit entriesChanged();
}

Task<> ErrorLog::clearAsked()
{
    if (m_entries.isEmpty())
        co_return;
    const int answer =
        co_await m_prompts.choose({.title = u"Clear the Error Log?"_s,
                                   .text = u"This deletes %1 for good. Support may still need them: Copy "
                                           "All keeps them as text."_s.arg(countText()),
                                   .choices = {u"Cancel"_s, u"Clear"_s},
                                   .safeChoice = 0});
    if (answer == 1)
        clear();
}

void ErrorLog::save()
{
    m_file.write(encodeJson(m_entries, Keys::asIs));
}

/// Runs on the writer's thread.
std::optional<QByteArray> ErrorLog::merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs)
{
    const auto read = [](const QByteArray &text) {
        return text.isEmpty() ? Entries() : decodeJson<Entries>(text, Keys::asIs);
    };
    try {
        const Entries here = read(ours);
        const Entries both = inOrder(mergeLists(read(base), here, read(theirs)).records);
        QMetaObject::invokeMethod(
            this,
            [this, here, both] {
                m_entries = inOrder(mergeLists(here, m_entries, both).records);
                save();
                emit entriesChanged();
            },
            Qt::QueuedConnection);
        return encodeJson(both, Keys::asIs);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

QString ErrorLog::countText() const
{
    return QString::number(m_entries.size()) + u" entries"_s;
}

QString ErrorLog::asText() const
{
    QStringList lines;
    for (const APIErrorEntry &entry : m_entries)
        lines += lineOf(entry);
    return lines.join(u'\n');
}

QString ErrorLog::lineOf(const APIErrorEntry &entry)
{
    static const QRegularExpression breaks(u"[\\t\\n\\v\\f\\r\\x{85}\\x{2028}\\x{2029}]+"_s);
    QStringList cells = {timeText(entry.date), entry.context, entry.detail};
    for (QString &cell : cells)
        cell.replace(breaks, u" "_s); // a carrier's message may have several lines
    return cells.join(u'\t');
}

QString ErrorLog::timeText(const QDateTime &time)
{
    return time.toLocalTime().toString(u"MM/dd/yy h:mm:ss AP"_s);
}

} // namespace parcelory
