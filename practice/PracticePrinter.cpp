#include "practice/PracticePrinter.h"

#include "core/AppError.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Takes a document out of a temporary file into `folder` under a name of its own.
void keepCopy(const QString &path, const QDir &folder, const QString &name)
{
    folder.mkpath(u"."_s);
    if (!QFile::copy(path, folder.filePath(name)))
        throw AppError(u"%1 could not be kept in %2"_s.arg(name, folder.absolutePath()));
}

ProcessOutcome answer(const QByteArray &out)
{
    return {0, out, {}};
}

} // namespace

PracticePrinter::PracticePrinter(QDir folder) : m_folder(std::move(folder))
{
    for (const QString &name : m_folder.entryList(QDir::Files)) // earlier runs' files stay
        m_jobs = std::max(m_jobs.load(), name.section(u'-', 0, 0).toInt());
}

ProcessOutcome PracticePrinter::run(const QString &program, const QStringList &arguments, const std::atomic<bool> *)
{
    if (program == u"/usr/bin/lpstat")
        return lpstat(arguments);
    if (program == u"/usr/bin/lpr")
        return lpr(arguments);
    if (program == u"/usr/sbin/cupsenable") {
        m_paused = m_paused && m_stubborn;
        return {};
    }
    throw AppError(u"The practice desk does not start %1."_s.arg(program));
}

void PracticePrinter::pause(bool stubborn)
{
    m_paused = true;
    m_stubborn = stubborn;
}

ProcessOutcome PracticePrinter::lpstat(const QStringList &arguments) const
{
    const QByteArray label = labelQueue.toUtf8(), document = documentQueue.toUtf8();
    if (arguments.first() == u"-e")
        return answer(document + '\n' + label + '\n');
    if (arguments.first() == u"-v")
        return answer("device for " + document + ": practice:/laser\ndevice for " + label +
                      ": usb://Zebra%20Technologies/ZTC%20ZD421-203dpi%20ZPL\n");
    const bool paused = m_paused && arguments.value(1) == labelQueue;
    return answer("printer " + arguments.value(1).toUtf8() +
                  (paused ? " disabled\n\tPaused\n" : " is idle.  enabled\n"));
}

ProcessOutcome PracticePrinter::lpr(const QStringList &arguments)
{
    const QString queue = arguments.value(1);
    if (queue != labelQueue && queue != documentQueue)
        return {1, {}, "/usr/bin/lpr: Error - The printer or class does not exist.\n"};
    const QString suffix = QFileInfo(arguments.last()).suffix();
    const QString name = u"%1-%2.%3"_s.arg(++m_jobs, 4, 10, QChar(u'0')).arg(queue, suffix);
    keepCopy(arguments.last(), m_folder, name);
    return {};
}

void PracticeDesktop::openFile(const QString &path)
{
    keepCopy(path, m_folder, QFileInfo(path).fileName());
    QFile::remove(path); // the copy is what a viewer would show
}

void PracticeDesktop::openUrl(const QUrl &url)
{
    m_folder.mkpath(u"."_s);
    QFile list(m_folder.filePath(u"web-pages.txt"_s));
    if (!list.open(QIODevice::Append))
        throw AppError(u"%1 could not be written — %2."_s.arg(list.fileName(), list.errorString()));
    list.write(url.toString().toUtf8() + '\n');
}

} // namespace parcelory
