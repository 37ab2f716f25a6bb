#include "devices/PrintWatch.h"

#include "core/Task.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"

#include <QPointer>

#include <algorithm>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;

constexpr auto lookEvery = 2s, lookSeldom = 10s;
constexpr int oftenLooks = 30; ///< one minute
/// How many polls a state may last before it is reported. At the start of every job the print system looks for the
/// printer, and a printer that prints has a job waiting.
constexpr int passingLooks = 2, slowLooks = 10;

} // namespace

PrintWatch::~PrintWatch()
{
    if (m_timer)
        m_clock.cancel(*m_timer);
}

bool PrintWatch::Followed::isWorthSaying() const
{
    switch (report.trouble) {
    case PrinterTrouble::none:
        return report.waiting == 0 || looks >= slowLooks;
    case PrinterTrouble::noPrintSystem:
    case PrinterTrouble::unknownQueue:
    case PrinterTrouble::paused:
    case PrinterTrouble::refusing:
    case PrinterTrouble::held:
        return true; // these do not pass by themselves
    default:
        return looks >= passingLooks;
    }
}

void PrintWatch::follow(const QString &queue, Paper paper, const QString &label)
{
    if (queue.isEmpty())
        return;
    // The clerk may have chosen another queue: keep an earlier queue only while jobs wait in it.
    std::erase_if(m_followed, [&](const auto &entry) {
        return entry.second.ended ||
               (entry.first != queue && entry.second.paper == paper && !entry.second.report.waiting);
    });
    Followed &followed = m_followed.try_emplace(queue, Followed{.paper = paper}).first->second;
    followed.looks = std::min(followed.looks, slowLooks);
    ++followed.jobs;
    if (!label.isEmpty())
        followed.labels += label;
    say();
    lookLater();
}

QString PrintWatch::caution(const QByteArray &label)
{
    if (m_toldOf300Dpi || !Zpl::isCutFrom300Dpi(label))
        return {};
    m_toldOf300Dpi = true;
    return u"It is made for a 300 dpi printer, and the part beyond six inches was cut off — check it "
           "before you use it."_s;
}

void PrintWatch::lookLater()
{
    if (m_timer)
        m_clock.cancel(*m_timer);
    m_timer.reset();
    bool open = false, often = false;
    for (const auto &[queue, followed] : m_followed) {
        open = open || !followed.ended;
        often = often || (!followed.ended && followed.looks < oftenLooks);
    }
    if (!open || m_looking)
        return;
    m_timer = m_clock.after(often ? lookEvery : lookSeldom, [this] {
        m_timer.reset();
        spawn([this] { return look(); });
    });
}

Task<> PrintWatch::look()
{
    m_looking = true;
    QStringList queues;
    QList<int> jobs;
    for (const auto &[queue, followed] : m_followed) {
        if (!followed.ended) {
            queues += queue;
            jobs += followed.jobs;
        }
    }
    const QPointer<PrintWatch> alive(this);
    const QList<PrinterReport> reports = co_await onPool([&printer = m_printer, queues] {
        QList<PrinterReport> reports;
        for (const QString &queue : queues)
            reports += printer.queueReport(queue);
        return reports;
    });
    if (!alive)
        co_return;
    m_looking = false;
    for (qsizetype i = 0; i < queues.size(); ++i)
        take(queues[i], jobs[i], reports[i]);
    say();
    lookLater();
}

void PrintWatch::take(const QString &queue, int jobs, const PrinterReport &report)
{
    const auto found = m_followed.find(queue);
    if (found == m_followed.end()) // another queue was chosen meanwhile
        return;
    Followed &followed = found->second;
    if (followed.jobs != jobs) // the report may be from before the last job: look again
        return;
    followed.looks = followed.report.oldestJob == report.oldestJob ? followed.looks + 1 : 1;
    followed.report = report;
    const bool isOver = report.isIdle() || !report.readable;
    if (isOver && !report.words.isEmpty())
        followed.ended = true; // the notice stays until the next label is printed
    else if (isOver) {
        const QStringList labels = report.isIdle() ? followed.labels : QStringList();
        m_followed.erase(found);
        if (!labels.isEmpty())
            emit cameOut(labels);
    }
}

void PrintWatch::say()
{
    notice = sentences([](const Followed &) { return true; });
    QStringList labels;
    for (const auto &[queue, followed] : m_followed)
        labels += followed.ended ? QStringList() : followed.labels;
    awaited = labels;
}

QString PrintWatch::noticeAbout(Paper paper) const
{
    return sentences([paper](const Followed &followed) { return followed.paper == paper; });
}

QString PrintWatch::sentences(const std::function<bool(const Followed &)> &isWanted) const
{
    QStringList sentences;
    for (const auto &[queue, followed] : m_followed) {
        const QString sentence = printerSentence(queue, followed.report, followed.paper);
        if (isWanted(followed) && !sentence.isEmpty() && followed.isWorthSaying())
            sentences += sentence;
    }
    return sentences.join(u' ');
}

} // namespace parcelory
