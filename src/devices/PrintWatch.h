#pragma once

#include "core/Task.h"
#include "devices/LabelPrinter.h"

#include <QObject>
#include <QProperty>

#include <map>
#include <optional>

namespace parcelory {

/// Follows what was handed to a printer until its queue is empty, and says what holds it up: the print tools are done
/// long before a label comes out. Main thread only.
class PrintWatch : public QObject {
public:
    PrintWatch(LabelPrinter &printer, Clock &clock) : m_printer(printer), m_clock(clock) {}
    ~PrintWatch() override;

    /// Empty while all is well; comes and goes by itself.
    QProperty<QString> notice;

    /// Call once a job was accepted or refused. An empty queue is nothing to follow.
    void follow(const QString &queue, Paper paper);
    /// What the clerk should know of a label that was sent, once a run; mostly empty.
    QString caution(const QByteArray &label);

private:
    struct Followed {
        Paper paper;
        int looks = 0; ///< since something last came out
        bool ended = false;
        PrinterReport report = {};

        bool isWorthSaying() const;
    };

    void lookLater();
    Task<> look();
    void take(const QString &queue, const PrinterReport &report);
    void say();

    LabelPrinter &m_printer;
    Clock &m_clock;
    std::map<QString, Followed> m_followed; ///< by queue
    std::optional<quint64> m_timer;
    bool m_looking = false;
    bool m_toldOf300Dpi = false;
};

} // namespace parcelory
