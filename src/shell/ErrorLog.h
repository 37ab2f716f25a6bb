#pragma once

#include "core/AppError.h"
#include "core/JsonFile.h"
#include "core/Platform.h"
#include "core/Task.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QUuid>

#include <optional>
#include <tuple>

namespace parcelory {

/// A failure, as the clerk reports it to support.
struct APIErrorEntry {
    QUuid id;
    QDateTime date;
    QString context; ///< which operation failed
    QString detail;  ///< the failure's description

    static constexpr auto fields()
    {
        using E = APIErrorEntry;
        return std::tuple{field("id", &E::id), field("date", &E::date), field("context", &E::context),
                          field("detail", &E::detail)};
    }
    bool operator==(const APIErrorEntry &) const = default;
};

/// Whether a recorded failure is shown at once in an alert with support's telephone number.
enum class Popup { no, yes };

/// The program's only error log, kept in a file across restarts. Programs that run at the same time share the file.
class ErrorLog : public QObject {
    Q_OBJECT
public:
    static constexpr qsizetype capacity = 1000;

    /// The only instance; valid while an ErrorLog exists.
    static ErrorLog &shared();

    explicit ErrorLog(Platform &platform);
    ~ErrorLog() override;

    /// Records a failure. May be called from any thread; the entry appears in the main thread's next event loop turn.
    /// An input error never raises the alert, because the screen already shows it; nor does an error that raised it
    /// less than a minute ago.
    void record(QString context, const std::exception &error, Popup popup);

    const QList<APIErrorEntry> &entries() const { return m_entries; } ///< newest first
    void clear();
    /// Clears the log if the clerk confirms.
    Task<> clearAsked();
    /// "12 entries"
    QString countText() const;
    /// The text that Copy All puts on the clipboard: one line per entry.
    QString asText() const;
    /// An entry's time, context and detail on one line, separated by tabs.
    static QString lineOf(const APIErrorEntry &entry);
    static QString timeText(const QDateTime &time);

    /// Waits until the file holds what entries() holds.
    void flush() { m_file.flush(); }

signals:
    void entriesChanged();

private:
    void add(APIErrorEntry entry, Popup popup);
    bool isRepeated(const QString &text);
    Task<> showAlerts();
    void save();
    std::optional<QByteArray> merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs);

    Clock &m_clock;
    Prompts &m_prompts;
    QString m_supportTelephone;
    JsonFile m_file;
    QList<APIErrorEntry> m_entries;
    QHash<QString, QDateTime> m_alertTimes; ///< when an alert's text was last shown, by the steady clock
    bool m_isClosing = false;
    QList<std::pair<QString, QString>> m_alerts; ///< the first alert is on screen
};

} // namespace parcelory
