#pragma once

#include "app/AppState.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "shell/StagingFolder.h"
#include "shell/UpdateFeed.h"
#include "shell/UpdateTools.h"

#include <optional>

namespace parcelory {

enum class UpdatePhase { idle, downloading, ready };

/// Keeps the installed program up to date: checks for a newer version, downloads it and starts a script that swaps the
/// applications after the program ends. Lives as long as AppState.
class UpdateChecker : public Observable {
public:
    explicit UpdateChecker(AppState &app);
    ~UpdateChecker(); ///< removes an unused download

    /// Deletes what updates of killed programs left in the folder for temporary files.
    static Task<> sweep();
    /// Ends the child process of a check or a download, because the program is ending.
    void stop() { m_tools.stop(); }

    Observed<std::optional<UpdateInfo>> available{this};
    Observed<int> offers{this, 0}; ///< incremented whenever the offer is to be shown, even if it is unchanged
    Observed<bool> busy{this, false};
    Observed<QString> status{this};
    Observed<UpdatePhase> phase{this, UpdatePhase::idle};
    Observed<std::optional<double>> progress{this}; ///< 0…1
    std::optional<QString> stagedHelper;            ///< path of the swap script
    QStringList stagedArgs;

    /// What the clerk must know about the signatures of updates; empty if this build verifies them.
    QString signatureNote() const;
    /// True once the script has been started: the program is ending.
    bool isRelaunching() const { return m_relaunching; }
    QString installedVersion() const { return m_application.version(); }

    /// Checks silently: shows nothing unless there is a newer version.
    Task<> checkOnLaunch() { return check(false); }
    /// Checks at the clerk's request and shows the result.
    Task<> checkNow() { return check(true); }
    /// Downloads the offered update and stages it.
    Task<> install();
    /// Starts the script and ends the program, unless `mayEnd` is false by then. If the staged files are gone, reports
    /// it and allows a new download.
    Task<> relaunchNow(std::function<bool()> mayEnd = [] { return true; });

private:
    struct Notice {
        QString title, text;
        bool isFailure = false;
    };

    Task<> check(bool announce);
    Task<std::optional<Notice>> look();
    void offer(const UpdateInfo &info);
    Task<> fetch(UpdateInfo info);
    Task<> download(UpdateInfo info, QString archive);
    void pollProgress(QString archive, qint64 total);
    void reportFailure(const std::exception &error);
    Task<> discard();
    void startHelper();
    QString withTelephone(const QString &text) const;

    AppState &m_app;
    Application &m_application;
    UpdateTools m_tools;
    bool m_announcing = false; ///< the clerk waits for the result of the running check
    bool m_relaunching = false;
    quint64 m_poll = 0;
    StagingFolder m_folder; ///< of the download
};

} // namespace parcelory
