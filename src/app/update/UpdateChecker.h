#pragma once

#include "app/AppState.h"
#include "core/Task.h"
#include "shell/UpdateFeed.h"
#include "shell/UpdateTools.h"

#include <QProperty>

#include <optional>

namespace parcelory {

enum class UpdatePhase { idle, downloading, ready };

/// Keeps the installed program up to date: looks for a newer version, brings it in and hands over to a script that
/// swaps the two once the program has ended. Lives as long as AppState.
class UpdateChecker {
public:
    explicit UpdateChecker(AppState &app);
    ~UpdateChecker(); ///< removes a download that was not put to use

    /// Ends the child process of a check or a download: the program ends, and nobody will want what it brings.
    void stop() { m_tools.stop(); }

    QProperty<std::optional<UpdateInfo>> available;
    QProperty<int> offers{0}; ///< counts up whenever the offer is to be shown, the same one again included
    QProperty<bool> busy{false};
    QProperty<QString> status;
    QProperty<UpdatePhase> phase{UpdatePhase::idle};
    QProperty<std::optional<double>> progress; ///< 0…1
    std::optional<QString> stagedHelper;       ///< the script
    QStringList stagedArgs;

    QString installedVersion() const { return m_application.version(); }

    /// Looks silently: nothing is heard of it unless there is something newer.
    Task<> checkOnLaunch() { return check(false); }
    /// Looks because the clerk wants to know, and says what came of it.
    Task<> checkNow() { return check(true); }
    /// Downloads what is offered and makes it ready.
    Task<> install();
    /// Starts the script and ends the program. When what was downloaded is gone, it has to be downloaded again.
    Task<> relaunchNow();

private:
    struct Notice {
        QString title, text;
    };

    Task<> check(bool announce);
    Task<std::optional<Notice>> look();
    void offer(const UpdateInfo &info);
    Task<> fetch(UpdateInfo info, QString folder);
    Task<> download(UpdateInfo info, QString archive);
    void pollProgress(QString archive, qint64 total);
    void reportFailure(const std::exception &error);
    Task<> discard();
    void startHelper();
    QString withTelephone(const QString &text) const;

    AppState &m_app;
    Application &m_application;
    UpdateTools m_tools;
    bool m_announcing = false; ///< somebody waits for the outcome of the check under way
    bool m_relaunching = false;
    quint64 m_poll = 0;
    QString m_folder; ///< where the download is
};

} // namespace parcelory
