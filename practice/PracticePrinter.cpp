#include "practice/PracticePrinter.h"

#include "core/AppError.h"
#include "core/Progress.h"
#include "core/ports/ProcessRunner.h"
#include "devices/zpl/ZplPainter.h"
#include "devices/zpl/ZplReader.h"
#include "platform/SystemProcesses.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Copies a document from a temporary file to `folder` as `name`.
void keepCopy(const QString &path, const QDir &folder, const QString &name)
{
    folder.mkpath(u"."_s);
    if (!QFile::copy(path, folder.filePath(name)))
        throw AppError(u"%1 could not be kept in %2"_s.arg(name, folder.absolutePath()));
}

/// Draws the label as a picture beside its file, for a desk without a label printer. A program without fonts draws
/// none.
void drawBeside(const QString &path, const QByteArray &zpl)
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return;
    const QList<ZplLabel> labels = readZpl(zpl).labels;
    for (qsizetype at = 0; at < labels.size(); ++at) {
        const QString number = at == 0 ? QString() : u"-%1"_s.arg(at + 1);
        const QString picture = path.chopped(4) + number + u".png"_s;
        if (!paintZpl(labels[at]).image.save(picture))
            throw AppError(u"%1 could not be written."_s.arg(picture));
    }
}

ProcessOutcome answer(const QByteArray &out)
{
    return {0, out, {}};
}

/// The print system's output about a label printer that has a job.
struct FaultWords {
    PrinterFault fault;
    QByteArray state, alerts;
};

const FaultWords &wordsOf(PrinterFault fault)
{
    static const FaultWords table[] = {
        {PrinterFault::none, "is idle.  enabled", "none"},
        {PrinterFault::paused, "disabled since Sat Nov 21 17:13:24 2026 -\n\tPaused", "paused"},
        {PrinterFault::off, "now printing.  enabled\n\tWaiting for printer to become available.", "none"},
        {PrinterFault::outOfLabels, "now printing.  enabled", "media-empty-error"},
    };
    const auto *row = std::ranges::find(table, fault, &FaultWords::fault);
    return row == std::end(table) ? table[0] : *row;
}

} // namespace

PracticePrinter::PracticePrinter(const QDir &folder) : m_folder(folder)
{
    for (const QString &name : m_folder.entryList(QDir::Files)) // continue the numbers of earlier runs
        m_jobs = std::max(m_jobs, name.section(u'-', 0, 0).toInt());
}

ProcessOutcome PracticePrinter::run(const QString &program, const QStringList &arguments, const CancelToken &,
                                    std::chrono::milliseconds)
{
    const std::lock_guard lock(m_access);
    if (program == u"/usr/bin/lpstat")
        return lpstat(arguments);
    if (program == u"/usr/bin/lpr")
        return lpr(arguments);
    if (program == u"/usr/sbin/cupsenable") {
        if (m_fault == PrinterFault::paused && !m_stubborn)
            setFault(PrinterFault::none);
        return {};
    }
    throw AppError(u"The practice desk does not start %1."_s.arg(program));
}

void PracticePrinter::setFault(PrinterFault fault, bool stubborn)
{
    const std::lock_guard lock(m_access);
    m_fault = fault;
    m_stubborn = stubborn;
    if (fault != PrinterFault::none)
        return;
    for (const Job &job : std::exchange(m_waiting, {}))
        print(job);
}

ProcessOutcome PracticePrinter::lpstat(const QStringList &arguments) const
{
    const bool unplugged = m_fault == PrinterFault::unknown;
    const QByteArray label = labelQueue.toUtf8(), document = documentQueue.toUtf8();
    if (arguments.first() == u"-r")
        return answer("scheduler is running\n");
    if (arguments.first() == u"-e")
        return answer(document + '\n' + (unplugged ? "" : label + '\n'));
    if (arguments.first() == u"-v")
        return answer(
            "device for " + document + ": practice:/laser\n" +
            (unplugged ? "" : "device for " + label + ": usb://Zebra%20Technologies/ZTC%20ZD421-203dpi%20ZPL\n"));
    const QString queue = arguments[arguments.indexOf(u"-p"_s) + 1];
    if (queue != documentQueue && (queue != labelQueue || unplugged))
        return {1, {}, "lpstat: Invalid destination name in list \"" + queue.toUtf8() + "\".\n"};
    return answer(described(queue, arguments.contains(u"-o"_s)));
}

QByteArray PracticePrinter::described(const QString &queue, bool withJobs) const
{
    const QByteArray name = queue.toUtf8();
    const bool isLabels = queue == labelQueue;
    const bool shows = isLabels && (m_fault == PrinterFault::paused || !m_waiting.isEmpty());
    const FaultWords &words = wordsOf(shows ? m_fault : PrinterFault::none);
    QByteArray text = "printer " + name + ' ' + words.state + '\n';
    if (!withJobs)
        return text;
    text += "\tForm mounted:\n\tAlerts: " + words.alerts + '\n' + name +
            " accepting requests since Sat Nov 21 17:13:24 2026\n";
    for (const Job &job : isLabels ? m_waiting : QList<Job>())
        text += name + '-' + QByteArray::number(job.number) +
                "  clerk  1024   Sat Nov 21 17:13:24 2026\n\tAlerts: none\n\tqueued for " + name + '\n';
    return text;
}

ProcessOutcome PracticePrinter::lpr(const QStringList &arguments)
{
    const QString queue = arguments.value(1);
    const bool isLabels = queue == labelQueue;
    if (queue != documentQueue && (!isLabels || m_fault == PrinterFault::unknown))
        return {1, {}, "/usr/bin/lpr: Error - The printer or class does not exist.\n"};
    QFile document(arguments.last());
    if (!document.open(QIODevice::ReadOnly))
        throw AppError(u"%1 could not be read — %2."_s.arg(document.fileName(), document.errorString()));
    const QString name = u"%1-%2.%3"_s.arg(++m_jobs, 4, 10, QChar(u'0')).arg(queue, QFileInfo(document).suffix());
    const Job job{m_jobs, name, document.readAll()};
    if (isLabels && m_fault != PrinterFault::none)
        m_waiting += job;
    else
        print(job);
    return {};
}

void PracticePrinter::print(const Job &job) const
{
    m_folder.mkpath(u"."_s);
    QFile paper(m_folder.filePath(job.file));
    if (!paper.open(QIODevice::WriteOnly | QIODevice::NewOnly) || paper.write(job.bytes) != job.bytes.size())
        throw AppError(u"%1 could not be kept in %2"_s.arg(job.file, m_folder.absolutePath()));
    paper.close();
    if (job.file.endsWith(u".zpl"))
        drawBeside(m_folder.filePath(job.file), job.bytes);
}

void PracticeDesktop::openFile(const QString &path)
{
    keepCopy(path, m_folder, QFileInfo(path).fileName());
    QFile::remove(path); // the copy takes the viewer's place
}

void PracticeDesktop::openUrl(const QUrl &url)
{
    if (url.isLocalFile()) { // the handbook is real
        SystemProcesses processes;
        SystemDesktop(processes).openUrl(url);
        return;
    }
    m_folder.mkpath(u"."_s);
    QFile list(m_folder.filePath(u"web-pages.txt"_s));
    if (!list.open(QIODevice::Append))
        throw AppError(u"%1 could not be written — %2."_s.arg(list.fileName(), list.errorString()));
    list.write(url.toString().toUtf8() + '\n');
}

} // namespace parcelory
