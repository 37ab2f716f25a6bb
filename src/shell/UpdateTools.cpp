#include "shell/UpdateTools.h"

#include "core/AppBundle.h"
#include "core/AppError.h"
#include "core/ports/ProcessRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QUuid>
#include <QXmlStreamReader>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>

static void loadResources()
{
    Q_INIT_RESOURCE(update); // a static library's resources are linked only when asked for
}

namespace parcelory {
using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace {

const QString curlTool = u"/usr/bin/curl"_s;
const QString chmodTool = u"/bin/chmod"_s;
const QString plutilTool = u"/usr/bin/plutil"_s;
const QString noApp = u"The update archive didn't contain an app."_s;

constexpr auto longestStep = std::chrono::minutes(5); // unpacking; curl has shorter limits of its own
constexpr qint64 longestVersion = 100;                // bytes
constexpr qint64 longestPropertyList = 1 << 20;       // bytes
constexpr qint64 longestFeed = 1 << 20;               // bytes; a feed takes a few hundred
constexpr qint64 largestFeedDownload = 8 * longestFeed, largestArchive = 1 << 30;

QString reason(const ProcessOutcome &outcome)
{
    return u"%1: %2"_s.arg(QString::number(outcome.status), QString::fromUtf8(outcome.err).trimmed());
}

/// curl's options against surprises: the address means one file, and a redirect never leaves https.
QStringList webOptions(const QString &url)
{
    const bool isOpen = url.startsWith(u"http:", Qt::CaseInsensitive);
    const QString schemes = isOpen ? u"=http,https"_s : u"=https"_s;
    return {u"--globoff"_s, u"--proto"_s, schemes, u"--proto-redir"_s, schemes};
}

bool holdsProgram(const QString &app)
{
    const QFileInfo program(app + u'/' + programInBundle);
    return program.isFile() && program.isExecutable(); // a folder can be executable, too
}

/// The unpacked application. Skips links and folders without the program, which could not run after the swap.
QString appIn(const QString &folder)
{
    for (const QFileInfo &entry : QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        if (entry.suffix() == u"app" && !entry.isSymLink() && holdsProgram(entry.filePath()))
            return entry.filePath();
    }
    throw SystemError(0, noApp);
}

bool isInside(const fs::path &path, const fs::path &folder)
{
    return std::ranges::mismatch(folder, path).in1 == folder.end();
}

/// A link that points outside the application would let an archive reach any of the user's files.
void requireLinksInside(const QString &app)
{
    const fs::path root = fs::canonical(QFile::encodeName(app).toStdString());
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_symlink())
            continue;
        std::error_code unknown, dangling;
        const fs::path link = fs::read_symlink(entry.path());
        const fs::path target = fs::weakly_canonical(entry.path().parent_path() / link, unknown);
        if (link.is_absolute() || (!unknown && !isInside(target, root)))
            throw AppError(u"The update archive holds a link that leads out of the app."_s);
        if (unknown || !fs::exists(target, dangling))
            throw AppError(u"The update archive holds a link to a file that is missing."_s);
    }
}

/// The text that follows a key in a property list.
std::optional<QString> textOfKey(const QByteArray &propertyList, const QString &key)
{
    QXmlStreamReader xml(propertyList);
    bool isNext = false;
    while (xml.readNext() != QXmlStreamReader::Invalid && !xml.atEnd()) {
        if (!xml.isStartElement())
            continue;
        if (isNext)
            return xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
        isNext = xml.name() == u"key" && xml.readElementText(QXmlStreamReader::SkipChildElements) == key;
    }
    return std::nullopt;
}

/// An archive may hold files that all users can write, or that run with their owner's rights.
void cleanMode(const fs::path &path, bool isFolder)
{
    using fs::perms;
    constexpr perms unwanted =
        perms::group_write | perms::others_write | perms::set_uid | perms::set_gid | perms::sticky_bit;
    fs::permissions(path, unwanted, fs::perm_options::remove);
    fs::permissions(path, perms::owner_read | perms::owner_write | (isFolder ? perms::owner_exec : perms::none),
                    fs::perm_options::add);
}

void cleanModes(const QString &app)
{
    const fs::path root = QFile::encodeName(app).toStdString();
    cleanMode(root, true);
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_symlink())
            cleanMode(entry.path(), entry.is_directory());
    }
}

} // namespace

ProcessOutcome UpdateTools::start(const QString &program, const QStringList &arguments) const
{
    return m_processes.run(program, arguments, m_cancel, longestStep);
}

void UpdateTools::run(const QString &program, const QStringList &arguments, const QString &failure) const
{
    const ProcessOutcome outcome = start(program, arguments);
    if (outcome.status != 0)
        throw SystemError(outcome.status, failure + reason(outcome));
}

void UpdateTools::curlDownload(const QString &url, const QString &file) const
{
    download(url, file, largestArchive);
}

void UpdateTools::download(const QString &url, const QString &file, qint64 largest) const
{
    run(curlTool,
        webOptions(url) + QStringList{u"--max-filesize"_s, QString::number(largest), u"-fsSL"_s, u"--max-time"_s,
                                      u"120"_s, u"-o"_s, file, url},
        u"curl "_s);
}

QByteArray UpdateTools::curlData(const QString &url) const
{
    const QString name = u"kxfeed-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces) + u".json"_s;
    QFile file(QDir::temp().filePath(name));
    const auto removed = qScopeGuard([&file] { file.remove(); });
    download(url, file.fileName(), largestFeedDownload);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(file.errorString());
    return file.read(longestFeed); // anything longer is not a feed, and its cut text does not parse
}

std::optional<qint64> UpdateTools::contentLength(const QString &url) const
{
    const ProcessOutcome outcome =
        start(curlTool, webOptions(url) + QStringList{u"-sIL"_s, u"--max-time"_s, u"20"_s, url});
    const QString name = u"content-length:"_s;
    std::optional<qint64> length;
    for (const QString &line : QString::fromLatin1(outcome.out).split(u'\n')) {
        if (!line.startsWith(name, Qt::CaseInsensitive))
            continue;
        bool isNumber = false;
        const qint64 bytes = line.sliced(name.size()).trimmed().toLongLong(&isNumber);
        length = isNumber ? std::optional(bytes) : std::nullopt;
    }
    return length;
}

void UpdateTools::unpack(const QString &archive, const QString &folder) const
{
#ifdef Q_OS_MACOS
    run(u"/usr/bin/ditto"_s, {u"-x"_s, u"-k"_s, archive, folder}, u"The update archive is broken — ditto "_s);
#else
    // The empty password keeps unzip from prompting at the terminal for an encrypted archive.
    run(u"/usr/bin/unzip"_s, {u"-q"_s, u"-o"_s, u"-P"_s, QString(), archive, u"-d"_s, folder},
        u"The update archive is broken — unzip "_s);
#endif
    QFile::remove(archive);
}

QString UpdateTools::stage(const QString &archive, const QString &folder) const
{
    unpack(archive, folder);
    const QString app = appIn(folder);
    requireLinksInside(app);
    cleanModes(app);
#ifdef Q_OS_MACOS
    start(u"/usr/bin/xattr"_s, {u"-dr"_s, u"com.apple.quarantine"_s, app}); // fails if the attribute is not set
#endif
    writeHelper(folder);
    return app;
}

std::optional<QString> UpdateTools::versionIn(const QString &app) const
{
    QFile plain(app + u"/version"_s), propertyList(app + u"/Contents/Info.plist"_s);
    if (propertyList.exists()) {
        QByteArray text =
            propertyList.open(QIODevice::ReadOnly) ? propertyList.read(longestPropertyList) : QByteArray();
        if (text.startsWith("bplist")) // the binary form, which only macOS has
            text = start(plutilTool, {u"-convert"_s, u"xml1"_s, u"-o"_s, u"-"_s, propertyList.fileName()}).out;
        const std::optional<QString> version = textOfKey(text, u"CFBundleShortVersionString"_s);
        if (version.value_or(QString()).isEmpty())
            throw AppError(u"The update archive doesn't say which version it holds."_s);
        return version;
    }
    if (plain.open(QIODevice::ReadOnly))
        return QString::fromUtf8(plain.read(longestVersion)).trimmed();
    return std::nullopt;
}

QString UpdateTools::helperIn(const QString &folder)
{
    return folder + u"/swap.sh"_s;
}

bool UpdateTools::isStaged(const QString &helper, const QString &app)
{
    return QFileInfo(helper).isFile() && holdsProgram(app);
}

void UpdateTools::writeHelper(const QString &folder) const
{
    loadResources();
    QFile script(u":/update/swap.sh"_s);
    const QByteArray text = script.open(QIODevice::ReadOnly) ? script.readAll() : QByteArray();
    // NewOnly, because the archive may contain a link with this name.
    QFile helper(helperIn(folder));
    if (!helper.open(QIODevice::WriteOnly | QIODevice::NewOnly) || helper.write(text) != text.size() || !helper.flush())
        throw AppError(u"The update helper could not be written — "_s + helper.errorString());
    run(chmodTool, {u"+x"_s, helper.fileName()}, u"chmod "_s);
}

} // namespace parcelory
