#include "app/update/UpdateChecker.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/Deployment.h"
#include "core/Task.h"
#include "shell/ErrorLog.h"
#include "shell/UpdateFeed.h"
#include "shell/UpdateSignature.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QScopeGuard>
#include <QUrl>

#include <algorithm>
#include <exception>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString notConfigured = u"This build doesn’t have an update feed set — contact Tobin"_s;
const QString failed = u"Update Check Failed"_s;
const QString unreadable = u"The update feed couldn't be read. Try again in a few minutes, or contact Tobin"_s;

const QString onPracticeDesk = u"The practice desk reaches nothing outside this computer, so it looks for no updates. "
                               "Start Parcelory without practice to check for a newer version."_s;

constexpr auto pollInterval = 250ms;
constexpr auto quitPatience = 1500ms;

/// The deployment file may still hold a placeholder instead of the feed's address.
bool isConfigured(const Deployment &deployment)
{
    return !deployment.updateFeed.contains(u"REPLACE-WITH"_s, Qt::CaseInsensitive);
}

/// Requires a web address, because curl would take anything else for an option or a local file. A download without
/// encryption also needs a checksum.
void requireWebAddress(const UpdateInfo &info)
{
    const QUrl url(info.url, QUrl::StrictMode);
    if (!url.isValid() || (url.scheme() != u"https" && url.scheme() != u"http") || url.host().isEmpty())
        throw AppError(u"the update has no download address"_s);
    const bool isOpenLine = url.scheme() == u"http" && url.host() != u"127.0.0.1";
    if (isOpenLine && !info.sha256)
        throw AppError(u"the feed's address is not encrypted and has no checksum"_s);
}

/// The helper script cannot replace an application in a folder without write access, and its failure would go
/// unnoticed.
void requireReplaceable(const QString &bundle)
{
    if (bundle.isEmpty())
        throw AppError(u"this copy of Parcelory was not installed as an app — update it the way it was installed"_s);
    const QString folder = QFileInfo(bundle).absolutePath();
    if (!QFileInfo(folder).isWritable())
        throw AppError(u"Parcelory can't write to %1, where it is installed"_s.arg(folder));
}

/// Without a key no signature can be verified; what is not even a signature is still refused.
void requireSignature(const UpdateInfo &info, const std::optional<QString> &key)
{
    const QString given = info.signature.value_or(QString());
    if (!key && !given.isEmpty() && !isSignature(given))
        throw AppError(u"the update's signature is damaged, so it was not installed"_s);
    if (key && (!info.sha256 || !info.signature || !signatureHolds(info.signedText(), *info.signature, *key)))
        throw AppError(u"the update is not signed by its publisher, so it was not installed"_s);
}

void requireChecksum(const UpdateInfo &info, const QString &archive)
{
    if (!info.sha256)
        return;
    QFile file(archive);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        throw AppError(file.errorString());
    if (QString::fromLatin1(hash.result().toHex()) != info.sha256->toLower())
        throw AppError(u"the downloaded file is not the announced update"_s);
}

/// An old archive under a new version's name would be offered again after every restart.
void requireVersion(const UpdateInfo &info, const std::optional<QString> &inside)
{
    if (inside && (isNewer(*inside, info.version) || isNewer(info.version, *inside)))
        throw AppError(u"the archive holds version %1 instead of %2"_s.arg(*inside, info.version));
}

} // namespace

UpdateChecker::UpdateChecker(AppState &app)
    : m_app(app), m_application(app.platform.application), m_tools(app.platform.processes)
{
}

UpdateChecker::~UpdateChecker()
{
    stop();
    m_app.platform.clock.cancel(m_poll);
    if (phase != UpdatePhase::idle && !m_relaunching)
        m_folder.remove();
}

Task<> UpdateChecker::sweep()
{
    co_await onPool([] { StagingFolder::sweep(); });
}

QString UpdateChecker::withTelephone(const QString &text) const
{
    return text + m_app.platform.deployment.supportTelephone;
}

QString UpdateChecker::signatureNote() const
{
    return m_app.platform.deployment.updatePublicKey
               ? QString()
               : u"Signatures of updates are not verified: this build has no update key."_s;
}

Task<> UpdateChecker::check(bool announce)
{
    if (phase != UpdatePhase::idle) { // the update being downloaded stays the offer
        offers = offers + (announce ? 1 : 0);
        co_return;
    }
    m_announcing = m_announcing || announce; // the launch check may still be running; it then serves both
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] {
        m_announcing = false;
        busy = false;
    });
    const std::optional<Notice> notice = co_await look();
    if (!notice || !m_announcing)
        co_return;
    if (notice->isFailure)
        m_app.errors.record(u"Update Check"_s, AppError(notice->text), Popup::no);
    co_await m_app.platform.prompts.alert(notice->title, notice->text);
}

Task<std::optional<UpdateChecker::Notice>> UpdateChecker::look()
{
    if (m_app.platform.practice)
        co_return Notice{u"Practice Desk"_s, onPracticeDesk};
    if (!isConfigured(m_app.platform.deployment))
        co_return Notice{u"Updates Not Configured"_s, withTelephone(notConfigured)};
    QByteArray data;
    try {
        data = co_await onPool(
            [tools = m_tools, feed = m_app.platform.deployment.updateFeed] { return tools.curlData(feed); });
    } catch (const AppError &error) {
        co_return Notice{failed, u"Couldn't reach the update server: "_s + error.description(), true};
    }
    const std::optional<UpdateInfo> info = parseUpdateFeed(data);
    if (!info)
        co_return Notice{failed, withTelephone(unreadable), true};
    if (isNewer(info->version, installedVersion())) {
        offer(*info);
        co_return std::nullopt;
    }
    if (phase == UpdatePhase::idle)
        available = std::nullopt;
    co_return Notice{u"You're Up to Date"_s, u"Parcelory "_s + installedVersion() + u" is the latest version."_s};
}

void UpdateChecker::offer(const UpdateInfo &info)
{
    if (phase == UpdatePhase::idle)
        available = info;
    offers = offers + 1;
}

Task<> UpdateChecker::install()
{
    const std::optional<UpdateInfo> info = available;
    if (!info || phase != UpdatePhase::idle)
        co_return;
    phase = UpdatePhase::downloading;
    progress = 0.0;
    status = u"Downloading v"_s + info->version + u"…"_s;
    try {
        co_await fetch(*info);
        phase = UpdatePhase::ready;
        status = u"Parcelory "_s + info->version + u" downloaded and ready to install."_s;
        offers = offers + 1; // the prompt may be closed by now
        co_return;
    } catch (const std::exception &error) {
        reportFailure(error);
    }
    co_await discard();
}

void UpdateChecker::reportFailure(const std::exception &error)
{
    status = u"Update failed: "_s + describe(error);
    m_app.errors.record(u"Self-Update"_s, error, Popup::no);
}

/// Deletes a partial or staged download, so that the download can start over.
Task<> UpdateChecker::discard()
{
    stagedHelper = std::nullopt;
    stagedArgs.clear();
    co_await onPool(m_folder, &StagingFolder::remove);
    progress = std::nullopt;
    phase = UpdatePhase::idle;
    offers = offers + 1;
}

Task<> UpdateChecker::fetch(UpdateInfo info)
{
    requireWebAddress(info);
    requireReplaceable(m_application.installedPath());
    requireSignature(info, m_app.platform.deployment.updatePublicKey);
    m_folder.create();
    const QString folder = m_folder.path();
    const QString archive = folder + u"/update.zip"_s;
    co_await download(info, archive);
    const QString app = co_await onPool([=, tools = m_tools] {
        requireChecksum(info, archive);
        const QString staged = tools.stage(archive, folder);
        requireVersion(info, tools.versionIn(staged));
        return staged;
    });
    stagedHelper = UpdateTools::helperIn(folder);
    stagedArgs = {QString::number(m_application.processId()), m_application.installedPath(), app};
}

Task<> UpdateChecker::download(UpdateInfo info, QString archive)
{
    const std::optional<qint64> total =
        co_await onPool([=, tools = m_tools] { return info.size ? info.size : tools.contentLength(info.url); });
    if (total && *total > 0)
        pollProgress(archive, *total);
    const auto polled = qScopeGuard([this] { m_app.platform.clock.cancel(m_poll); });
    co_await onPool([=, tools = m_tools] { tools.curlDownload(info.url, archive); });
    progress = 1.0;
}

void UpdateChecker::pollProgress(QString archive, qint64 total)
{
    m_poll = m_app.platform.clock.after(pollInterval, [=, this] {
        progress = std::min(1.0, double(QFileInfo(archive).size()) / double(total));
        pollProgress(archive, total);
    });
}

Task<> UpdateChecker::relaunchNow(std::function<bool()> mayEnd)
{
    if (!stagedHelper || m_relaunching)
        co_return;
    m_relaunching = true;
    const bool staged = co_await onPool(
        [helper = *stagedHelper, app = stagedArgs.last()] { return UpdateTools::isStaged(helper, app); });
    if (staged && mayEnd()) {
        startHelper();
        co_return;
    }
    m_relaunching = false;
    if (staged)
        co_return;
    reportFailure(AppError(u"what was downloaded is no longer there — download it again"_s));
    co_await discard();
}

void UpdateChecker::startHelper()
{
    try {
        m_application.startDetached(u"/bin/sh"_s, QStringList(*stagedHelper) + stagedArgs);
    } catch (const AppError &error) {
        status = u"Couldn't start the update helper: "_s + m_app.recorded(u"Self-Update Relaunch"_s, error, Popup::no);
        m_relaunching = false;
        return;
    }
    m_application.quitWithin(quitPatience);
}

} // namespace parcelory
