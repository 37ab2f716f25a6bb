#include "devices/LabelPrinter.h"

#include "core/AppError.h"
#include "core/Platform.h"
#include "core/SettingsKeys.h"
#include "core/Text.h"
#include "core/ports/Preferences.h"
#include "core/ports/ProcessRunner.h"
#include "devices/HandoverFile.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"

#include <QRegularExpression>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString lprTool = u"/usr/bin/lpr"_s;
const QString lpstatTool = u"/usr/bin/lpstat"_s;
const QString cupsenableTool = u"/usr/sbin/cupsenable"_s;

constexpr QStringView zebraWords[] = {u"zebra", u"ztc", u"zpl", u"gk420", u"gx420",
                                      u"zd4",   u"zd6", u"zp4", u"zt2",   u"zt4"};

/// The Zebra queues in the output of lpstat -v.
QStringList zebrasIn(const QStringList &lines)
{
    static const QRegularExpression device(u"^device for ([^:]+): (.*)$"_s);
    QStringList found;
    for (const QString &line : lines) {
        const auto match = device.match(line);
        if (!match.hasMatch())
            continue;
        const QString queue = trimBlanks(match.captured(1));
        const QString described = QString(queue + u' ' + trimBlanks(match.captured(2))).toLower();
        if (std::ranges::any_of(zebraWords, [&](QStringView word) { return described.contains(word); }))
            found += queue;
    }
    return found;
}

/// ProcessRunner reports a tool that crashed or was killed as 128 plus the signal.
bool hasCrashed(const ProcessOutcome &outcome)
{
    return outcome.status > 128;
}

QString failureText(const ProcessOutcome &outcome)
{
    if (hasCrashed(outcome))
        return u"lpstat crashed (signal %1)"_s.arg(outcome.status - 128);
    const QString reason = utf8OrEmpty(outcome.err).trimmed();
    return reason.isEmpty() ? u"lpstat ended with status %1"_s.arg(outcome.status) : reason;
}

} // namespace

LabelPrinter::LabelPrinter(Platform &platform)
    : m_processes(platform.processes), m_desktop(platform.desktop), m_preferences(platform.preferences)
{
}

QString LabelPrinter::print(const LabelFile &label, const QString &zebraQueue, const QString &documentQueue)
{
    switch (label.kind) {
    case LabelKind::pdf:
        if (sendPdf(label, documentQueue))
            return u"Shippo returned a PDF label (not ZPL) — sent to "_s + documentQueue + u'.';
        return u"Shippo returned a PDF label (not ZPL) — opened in Preview."_s;
    case LabelKind::png:
        view(label.bytes, u"parcelory-label-"_s, u".png"_s);
        return u"Shippo returned a PNG label (not ZPL) — opened in Preview."_s;
    case LabelKind::notALabel: // rejected by sendZpl()
    case LabelKind::zpl:
        break;
    }
    sendZpl(label, zebraQueue);
    return u"Label sent to "_s + zebraQueue + u'.';
}

void LabelPrinter::printZPL(const QByteArray &zpl, const QString &queue)
{
    sendZpl(parseLabel(zpl), queue);
}

void LabelPrinter::sendZpl(const LabelFile &label, const QString &queue)
{
    if (queue.isEmpty())
        throw SystemError(noQueue, u"No Zebra printer queue selected in Settings."_s);
    if (label.kind != LabelKind::zpl)
        throw SystemError(notALabel, u"the carrier's file is not a label"_s);
    if (queueIsPaused(queue)) {
        tryResume(queue);
        if (queueIsPaused(queue))
            throw SystemError(pausedQueue, u"The Zebra queue “%1” is PAUSED in macOS and is holding jobs. Open System "
                                           "Settings → Printers & Scanners → %1 and press Resume."_s.arg(queue));
    }
    QByteArray program = Zpl::clamped(label.bytes);
    if (rotate180())
        program = Zpl::rotated(program);
    else if (read(m_preferences, settings::turnedQueues).contains(queue))
        program = Zpl::upright(program);
    const HandoverFile file(program, u"parcelory-"_s, u".zpl"_s);
    lpr(file.path(), queue, true);
    if (Zpl::leavesTurned(program))
        rememberTurned(queue);
}

/// Kept permanently, across restarts: the program cannot know whether the printer was switched off in between.
void LabelPrinter::rememberTurned(const QString &queue)
{
    QStringList turned = read(m_preferences, settings::turnedQueues);
    if (!turned.contains(queue))
        write(m_preferences, settings::turnedQueues, turned << queue);
}

bool LabelPrinter::printPDF(const QByteArray &pdf, const QString &queue)
{
    return sendPdf(parseLabel(pdf), queue);
}

bool LabelPrinter::sendPdf(const LabelFile &document, const QString &queue)
{
    if (document.kind != LabelKind::pdf)
        throw SystemError(notALabel, u"the document is not a PDF"_s);
    if (queue.isEmpty()) {
        view(document.bytes, u"parcelory-"_s, u".pdf"_s);
        return false;
    }
    const HandoverFile file(document.bytes, u"parcelory-"_s, u".pdf"_s);
    lpr(file.path(), queue, false);
    return true;
}

void LabelPrinter::view(const QByteArray &bytes, const QString &prefix, const QString &suffix)
{
    HandoverFile file(bytes, prefix, suffix);
    file.keepForViewer(); // it is the clerk's only copy if no viewer opens
    m_desktop.openFile(file.path());
}

ProcessOutcome LabelPrinter::runTool(const QString &tool, const QStringList &arguments)
{
    try {
        return m_processes.run(tool, arguments, {}, toolLimit);
    } catch (const ProcessTimedOut &) {
        throw ProcessTimedOut(u"the print system did not answer within %1 seconds"_s.arg(toolLimit.count()));
    }
}

void LabelPrinter::lpr(const QString &path, const QString &queue, bool raw)
{
    QStringList arguments = {u"-P"_s, queue};
    if (raw)
        arguments += {u"-o"_s, u"raw"_s};
    ProcessOutcome outcome;
    try {
        outcome = runTool(lprTool, arguments << path);
    } catch (const ProcessTimedOut &error) {
        const QString paper = raw ? u"label"_s : u"document"_s;
        throw SystemError(noAnswer, u"%1; the %2 may still come out"_s.arg(error.description(), paper));
    }
    if (outcome.status != 0)
        throw SystemError(outcome.status, u"lpr failed: "_s + utf8OrEmpty(outcome.err));
}

/// Throws if the tool fails. A print system without any queue is no failure, although lpstat ends with status 1.
QStringList LabelPrinter::lpstatLines(const QString &option)
{
    const ProcessOutcome outcome = runTool(lpstatTool, {option});
    const bool hasNoQueues = utf8OrEmpty(outcome.err).contains(u"No destinations added"_s);
    if (hasCrashed(outcome) || (outcome.status != 0 && !hasNoQueues))
        throw SystemError(outcome.status, failureText(outcome));
    return utf8OrEmpty(outcome.out).split(u'\n', Qt::SkipEmptyParts);
}

LabelPrinter::Queues LabelPrinter::listQueues()
{
    const QStringList zebras = zebrasIn(lpstatLines(u"-v"_s)); // first: -e succeeds even without a print system
    return {lpstatLines(u"-e"_s), zebras};
}

QStringList LabelPrinter::queues()
{
    try {
        return lpstatLines(u"-e"_s);
    } catch (const AppError &) {
        return {};
    }
}

QStringList LabelPrinter::zebraQueues()
{
    try {
        return zebrasIn(lpstatLines(u"-v"_s));
    } catch (const AppError &) {
        return {};
    }
}

bool LabelPrinter::queueIsPaused(const QString &queue)
{
    try {
        const ProcessOutcome outcome = runTool(lpstatTool, {u"-p"_s, queue});
        return utf8OrEmpty(outcome.out + outcome.err).toLower().contains(u"disabled"_s);
    } catch (const AppError &) {
        return false;
    }
}

PrinterReport LabelPrinter::queueReport(const QString &queue)
{
    if (queue.isEmpty())
        return {};
    try {
        const ProcessOutcome outcome = runTool(lpstatTool, {u"-l"_s, u"-p"_s, queue, u"-a"_s, queue, u"-o"_s, queue});
        if (hasCrashed(outcome)) // a list of jobs that breaks off would look like an empty queue
            return {.words = failureText(outcome)};
        PrinterReport report = readPrinterReport(outcome.out, outcome.err);
        if (!report.readable && outcome.status != 0)
            report.words = failureText(outcome);
        if (report.trouble != PrinterTrouble::unknownQueue)
            return report;
        const ProcessOutcome scheduler = runTool(lpstatTool, {u"-r"_s});
        if (utf8OrEmpty(scheduler.out + scheduler.err).contains(u"not running"_s))
            report.trouble = PrinterTrouble::noPrintSystem;
        return report;
    } catch (const AppError &error) {
        return {.words = error.description()};
    }
}

void LabelPrinter::tryResume(const QString &queue)
{
    try {
        runTool(cupsenableTool, {queue});
    } catch (const AppError &) {
        // The caller checks afterward whether the queue is still paused.
    }
}

bool LabelPrinter::rotate180() const
{
    return read(m_preferences, settings::rotate180);
}

} // namespace parcelory
