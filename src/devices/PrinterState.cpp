#include "devices/PrinterState.h"

#include "core/Text.h"

#include <QRegularExpression>
#include <QStringList>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The first sign that is found counts: a printer that has run out of labels often reports itself offline as well. The
/// keywords with a hyphen are the same in every language; sentences are English, because the tools run in that locale.
constexpr std::pair<QStringView, PrinterTrouble> signs[] = {
    {u"media-empty", PrinterTrouble::outOfLabels},
    {u"media-needed", PrinterTrouble::outOfLabels},
    {u"out of paper", PrinterTrouble::outOfLabels},
    {u"paper out", PrinterTrouble::outOfLabels},
    {u"media out", PrinterTrouble::outOfLabels},
    {u"cover-open", PrinterTrouble::open},
    {u"door-open", PrinterTrouble::open},
    {u"interlock-open", PrinterTrouble::open},
    {u"head open", PrinterTrouble::open},
    {u"marker-supply-empty", PrinterTrouble::ribbon},
    {u"toner-empty", PrinterTrouble::ribbon},
    {u"ribbon out", PrinterTrouble::ribbon},
    {u"media-jam", PrinterTrouble::jammed},
    {u"printer is in use", PrinterTrouble::inUse},
    {u"offline", PrinterTrouble::offline},
    {u"connecting-to-device", PrinterTrouble::offline},
    {u"looking for printer", PrinterTrouble::offline},
    {u"waiting for printer to become available", PrinterTrouble::offline},
    {u"unable to locate printer", PrinterTrouble::offline},
    {u"unable to contact printer", PrinterTrouble::offline},
    {u"not responding", PrinterTrouble::offline},
    {u"may not exist", PrinterTrouble::offline},
    {u"unreachable", PrinterTrouble::offline},
    {u"not connected", PrinterTrouble::offline},
};

/// Messages of normal operation, which the print system also keeps afterward.
constexpr QStringView progress[] = {u"paused",
                                    u"reason unknown",
                                    u"connecting to printer",
                                    u"connected to printer",
                                    u"the printer is now connected",
                                    u"sending data to printer",
                                    u"print file sent",
                                    u"waiting for printer to finish"};

PrinterTrouble troubleIn(const QString &said)
{
    for (const auto &[sign, trouble] : signs) {
        if (said.contains(sign, Qt::CaseInsensitive))
            return trouble;
    }
    return PrinterTrouble::none;
}

QString withoutProgress(QString words)
{
    if (words.endsWith(u'.'))
        words.chop(1);
    for (const QStringView usual : progress) {
        if (words.startsWith(usual, Qt::CaseInsensitive))
            return {};
    }
    return words;
}

/// lpstat's output, parsed. Lines that begin with a tab belong to the line above them.
struct Answer {
    QString state, message, alerts; ///< of the printer
    QString jobAlerts;              ///< of the oldest job
    QString refusal;                ///< why no job is accepted
    bool refuses = false;
    int jobs = 0;
    QString oldestJob;

    explicit Answer(const QString &text);

private:
    enum class About { nothing, printer, acceptance, oldestJob };
    void takeHead(const QString &line, About &about);
    void takeDetail(const QString &detail, About about, bool first);
};

Answer::Answer(const QString &text)
{
    About about = About::nothing;
    bool first = false;
    for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(u'\t')) {
            takeDetail(line.trimmed(), about, first);
            first = false;
        } else {
            takeHead(line, about);
            first = true;
        }
    }
}

void Answer::takeHead(const QString &line, About &about)
{
    static const QRegularExpression job(u"^\\S+-\\d+\\s.*\\s\\d+   \\S"_s); // name, user, size, date
    about = About::nothing;
    if (line.startsWith(u"printer ") && state.isEmpty()) {
        state = line.section(u' ', 2);
        about = About::printer;
    } else if (line.contains(u" accepting requests since ")) {
        refuses = line.contains(u" not accepting requests since ");
        about = About::acceptance;
    } else if (job.match(line).hasMatch() && ++jobs == 1) {
        oldestJob = line.section(u' ', 0, 0);
        about = About::oldestJob;
    }
}

void Answer::takeDetail(const QString &detail, About about, bool first)
{
    const QString alertsHead = u"Alerts: "_s;
    if (about == About::printer && first && !detail.startsWith(u"Form mounted"))
        message = detail;
    else if (about == About::printer && detail.startsWith(alertsHead))
        alerts = detail.mid(alertsHead.size());
    else if (about == About::oldestJob && detail.startsWith(alertsHead))
        jobAlerts = detail.mid(alertsHead.size());
    else if (about == About::acceptance && first)
        refusal = detail;
}

QString cause(const PrinterReport &report, Paper paper)
{
    const bool label = paper == Paper::label;
    const QString quoted = report.words.isEmpty() ? QString() : u" (“"_s + report.words + u"”)"_s;
    switch (report.trouble) {
    case PrinterTrouble::none:
        return report.words.isEmpty() ? QString() : u"it reports “"_s + report.words + u"”"_s;
    case PrinterTrouble::noPrintSystem:
        return u"this computer's print system is not running"_s;
    case PrinterTrouble::unknownQueue:
        return u"no printer of that name is set up on this computer; choose one in Settings"_s;
    case PrinterTrouble::paused:
        return u"the queue is paused"_s + quoted + u"; resume it in the system's printer settings"_s;
    case PrinterTrouble::refusing:
        return u"the queue takes no new jobs"_s + quoted;
    case PrinterTrouble::held:
        return u"the queue is holding jobs back"_s + quoted;
    case PrinterTrouble::outOfLabels:
        return label ? u"the printer is out of labels"_s : u"the printer is out of paper"_s;
    case PrinterTrouble::open:
        return u"the printer is open"_s;
    case PrinterTrouble::ribbon:
        return label ? u"the printer's ribbon is used up"_s : u"the printer's toner or ink is used up"_s;
    case PrinterTrouble::jammed:
        return u"something is jammed in the printer"_s;
    case PrinterTrouble::inUse:
        return u"another computer is printing on it"_s;
    case PrinterTrouble::offline:
        return u"the printer is off or not connected"_s;
    }
    return {};
}

} // namespace

PrinterReport readPrinterReport(const QByteArray &out, const QByteArray &err)
{
    PrinterReport report;
    if (utf8OrEmpty(err).contains(u"Invalid destination name"_s)) {
        report.readable = true;
        report.trouble = PrinterTrouble::unknownQueue;
        return report;
    }
    const Answer answer(utf8OrEmpty(out));
    report.readable = !answer.state.isEmpty();
    report.waiting = answer.jobs;
    report.oldestJob = answer.oldestJob;
    report.words = withoutProgress(answer.message);
    if (answer.state.startsWith(u"disabled"))
        report.trouble = PrinterTrouble::paused;
    else if (answer.state.startsWith(u"is holding new jobs"))
        report.trouble = PrinterTrouble::held;
    else if (answer.jobs > 0) // what an idle queue reports is left over from an earlier job
        report.trouble = troubleIn(answer.alerts + u'\n' + answer.message);
    const bool held = answer.jobAlerts.contains(u"job-hold"_s) || answer.jobAlerts.contains(u"-held-"_s);
    if (report.trouble == PrinterTrouble::none && held)
        report.trouble = PrinterTrouble::held;
    if (report.trouble == PrinterTrouble::none && answer.refuses) {
        report.trouble = PrinterTrouble::refusing;
        report.words = withoutProgress(answer.refusal);
    }
    return report;
}

QString printerSentence(const QString &queue, const PrinterReport &report, Paper paper)
{
    const QString why = cause(report, paper);
    const QString noun = paper == Paper::label ? u"label"_s : u"document"_s;
    if (report.waiting > 0) {
        const QString many =
            report.waiting == 1 ? u"1 %1 is"_s.arg(noun) : u"%1 %2s are"_s.arg(report.waiting).arg(noun);
        return many + u" still waiting on "_s + queue + (why.isEmpty() ? why : u" — "_s + why) + u'.';
    }
    if (why.isEmpty())
        return {};
    if (report.trouble == PrinterTrouble::none)
        return u"%1 reports “%2” — check whether the last %3 came out."_s.arg(queue, report.words, noun);
    return queue + u": "_s + why + u'.';
}

} // namespace parcelory
