#pragma once

#include "core/Observable.h"
#include "core/Task.h"
#include "devices/LabelPrinter.h"

#include <QObject>

#include <functional>
#include <map>
#include <optional>

namespace parcelory {

/// Polls a printer's queue until it is empty and reports what holds it up: the print tools return long before a label
/// comes out. Main thread only.
class PrintWatch : public Observable {
    Q_OBJECT
public:
    PrintWatch(LabelPrinter &printer, Clock &clock) : m_printer(printer), m_clock(clock) {}
    ~PrintWatch() override;

    /// The text for the clerk; empty if there is no problem. Updated automatically.
    Observed<QString> notice{this};
    Observed<QStringList> awaited{this}; ///< labels that a queue has accepted and that may still be in it

    /// The part of the notice that is about this paper's printer.
    QString noticeAbout(Paper paper) const;

    /// Call after a job was accepted or refused. Ignores an empty queue name. `label`: what the queue has accepted, for
    /// cameOut(); may be empty.
    void follow(const QString &queue, Paper paper, const QString &label = {});
    /// A warning about a label that was sent, at most once per run of the program; usually empty.
    QString caution(const QByteArray &label);

signals:
    /// The queue of these labels is empty, and reported no problem.
    void cameOut(const QStringList &labels);

private:
    struct Followed {
        Paper paper;
        QStringList labels = {};
        int looks = 0; ///< polls since the last label came out
        int jobs = 0;  ///< incremented with every job
        bool ended = false;
        PrinterReport report = {};

        bool isWorthSaying() const;
    };

    void lookLater();
    Task<> look();
    void take(const QString &queue, int jobs, const PrinterReport &report);
    void say();
    QString sentences(const std::function<bool(const Followed &)> &isWanted) const;

    LabelPrinter &m_printer;
    Clock &m_clock;
    std::map<QString, Followed> m_followed; ///< by queue
    std::optional<quint64> m_timer;
    bool m_looking = false;
    bool m_toldOf300Dpi = false;
};

} // namespace parcelory
