#pragma once

// IWYU pragma: begin_exports
#include "records/LabelHistory.h"
#include "records/LabelVerdicts.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "support/RunTask.h"
#include "support/Table.h"

#include <QBuffer>
// IWYU pragma: end_exports

namespace parcelory::test {

/// A temporary folder with a mailing log, and direct access to the log's file.
struct LogFile {
    QTemporaryDir folder;

    QString path(const QString &name = QStringLiteral("mailing_log.sqlite")) const { return folder.filePath(name); }
    void put(const QString &name, const QByteArray &bytes) const { test::put(path(name), bytes); }

    /// Runs a script like another program.
    void run(const QByteArray &script) const { ASSERT_TRUE(Database(path()).exec(script.constData())); }
    /// The first column of the rows that a query returns.
    QStringList ask(const QByteArray &sql) const
    {
        const Database db(path());
        QStringList answers;
        for (Statement rows(db, sql); rows.step();)
            answers += rows.text(0);
        return answers;
    }
    /// Puts another file in the log's place, like another program that restores a copy.
    void replaceWith(const LogFile &copy) const
    {
        ASSERT_EQ(std::rename(QFile::encodeName(copy.path()).constData(), QFile::encodeName(path()).constData()), 0);
    }
    QStringList recipients() const { return ask("SELECT recipient FROM shipments ORDER BY id"); }
};

inline ShipmentRecord shipmentTo(const QString &recipient, int minute = 0)
{
    return {.createdAt = QDateTime(QDate(2026, 11, 20), QTime(14, minute)), .recipient = recipient};
}

/// The row with this id.
inline ShipmentRecord rowOf(const ShipmentLog &log, qint64 id)
{
    return log.find({.id = id}).valueOr(std::nullopt).value_or(ShipmentRecord());
}

/// A transaction id in the carrier's format.
inline QString transactionId(int number = 1)
{
    return QStringLiteral("%1").arg(number, 32, 16, QChar(u'0'));
}

/// The recipients in the list after the main thread has received it.
inline QStringList shown(const ShipmentLog &log)
{
    settle();
    return each(log.records(), &ShipmentRecord::recipient);
}

/// The whole log as an exchange file.
inline QString exported(const ShipmentLog &log)
{
    QBuffer text;
    text.open(QIODevice::WriteOnly);
    [[maybe_unused]] const auto complete = log.exportEndiciaCSV(text);
    return QString::fromUtf8(text.data());
}

/// A line of an exchange file with the required fields.
inline QByteArray mailLine(const QByteArray &recipient)
{
    return "\tStamp\t11/20/26 02:41 PM\tpiece\t" + recipient + "\t\t1.00\t4\t\tPriority Mail\t\t9400\n";
}

} // namespace parcelory::test
