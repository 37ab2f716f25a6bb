#include "app/handbook/Handbook.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/Platform.h"
#include "shell/ErrorLog.h"

#include <QFile>
#include <QUrl>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// "… was bought …" as a pattern: each "…" stands for a name, a number or a reason.
QRegularExpression patternOf(const QString &message)
{
    QStringList parts = message.split(u'…', Qt::SkipEmptyParts);
    for (QString &part : parts)
        part = QRegularExpression::escape(part.trimmed());
    return QRegularExpression(parts.join(u".*?"_s), QRegularExpression::DotMatchesEverythingOption);
}

} // namespace

QStringList Handbook::places(const QString &programFolder)
{
    // A build on macOS has the pages beside the bundle.
    const QStringList places = {u"/handbook"_s, u"/../share/parcelory/handbook"_s, u"/../Resources/handbook"_s,
                                u"/../../../handbook"_s};
    QStringList folders;
    for (const QString &place : places)
        folders += programFolder + place;
    return folders;
}

/// The file messages.tsv has a line for each paragraph: its id, a tab, the message. Its page is go/ID.html.
Handbook::Contents Handbook::read(const QStringList &folders)
{
    for (const QString &folder : folders) {
        QFile messages(folder + u"/messages.tsv"_s);
        if (!QFile::exists(folder + u"/index.html"_s) || !messages.open(QIODevice::ReadOnly))
            continue;
        Contents contents{folder, {}};
        const QStringList lines = QString::fromUtf8(messages.readAll()).split(u'\n', Qt::SkipEmptyParts);
        for (const QString &line : lines) {
            const QString message = line.section(u'\t', 1);
            contents.paragraphs.append({u"go/%1.html"_s.arg(line.section(u'\t', 0, 0)), patternOf(message),
                                        message.size() - message.count(u'…')});
        }
        return contents;
    }
    return {};
}

Task<> Handbook::load(QStringList folders)
{
    m_contents = co_await onPool([folders] { return read(folders); });
    installed = !m_contents.folder.isEmpty();
}

/// If several paragraphs explain parts of a message, the one that has most of its words.
QString Handbook::pageAbout(const QString &message) const
{
    const Paragraph *best = nullptr;
    for (const Paragraph &paragraph : m_contents.paragraphs) {
        if ((!best || paragraph.precision > best->precision) && paragraph.message.match(message).hasMatch())
            best = &paragraph;
    }
    return best ? best->page : QString();
}

Task<> Handbook::open(QString page)
{
    const QUrl url = QUrl::fromLocalFile(m_contents.folder + u'/' + (page.isEmpty() ? u"index.html"_s : page));
    QString failure;
    try {
        co_await onPool([&desktop = m_app.platform.desktop, url] { desktop.openUrl(url); });
    } catch (const AppError &error) {
        failure = m_app.recorded(u"Handbook"_s, error, Popup::no);
    }
    if (!failure.isEmpty())
        co_await m_app.platform.prompts.alert(u"Handbook"_s, u"The handbook could not be opened: "_s + failure);
}

} // namespace parcelory
