#include "records/ScanForms.h"

#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <optional>

namespace parcelory {

using ShipmentLogRows::secondsOf;
using ShipmentLogRows::timeOf;

namespace {

/// Runs before a form is stored, so that a desk without SCAN forms gets no such tables.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS scan_forms (\n"
                        "  id INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                        "  asked_at REAL NOT NULL,\n"
                        "  test_mode INTEGER NOT NULL,\n"
                        "  labels INTEGER NOT NULL,\n"
                        "  manifest_id TEXT NOT NULL DEFAULT '',\n"
                        "  state TEXT NOT NULL DEFAULT 'ASKED'\n" // then MADE, and READY or EMPTY
                        ");\n"
                        "CREATE TABLE IF NOT EXISTS scan_form_labels (\n"
                        "  form_id INTEGER NOT NULL,\n"
                        "  transaction_id TEXT NOT NULL\n"
                        ");\n"
                        "CREATE INDEX IF NOT EXISTS idx_scan_form_labels ON scan_form_labels(transaction_id);\n"
                        "CREATE INDEX IF NOT EXISTS idx_scan_form_forms ON scan_form_labels(form_id);\n"
                        "CREATE TABLE IF NOT EXISTS scan_form_documents (\n"
                        "  form_id INTEGER NOT NULL,\n"
                        "  number INTEGER NOT NULL,\n"
                        "  document BLOB NOT NULL\n"
                        ");";

/// How long before its form a label may have been bought: the carrier accepts labels a week ahead.
constexpr int longestWait = 9; ///< days

bool putLabels(Database &db, qint64 form, const QStringList &transactions)
{
    if (!execute(db, "DELETE FROM scan_form_labels WHERE form_id = ?", form))
        return false;
    Statement insert(db, "INSERT INTO scan_form_labels (form_id, transaction_id) VALUES (?, ?)");
    for (const QString &transaction : transactions) {
        insert.bind(1, form);
        insert.bind(2, transaction);
        if (!insert.execute())
            return false;
    }
    return true;
}

} // namespace

std::optional<qint64> ScanForms::begin(const ScanForm &form)
{
    qint64 id = 0;
    const bool stored = m_log.change([&](Database &db) {
        if (!db.exec(schema) || !execute(db, "INSERT INTO scan_forms (asked_at, test_mode, labels) VALUES (?, ?, ?)",
                                         secondsOf(form.askedAt), form.testMode, qint64(form.labels)))
            return false;
        id = db.lastInsertedId();
        return putLabels(db, id, form.transactions);
    });
    return stored ? std::optional(id) : std::nullopt;
}

bool ScanForms::setMade(qint64 id, const QString &manifestId, const QStringList &transactions)
{
    return m_log.change([&](Database &db) {
        return execute(db, "UPDATE scan_forms SET manifest_id = ?, state = 'MADE' WHERE id = ?", manifestId, id) &&
               (transactions.isEmpty() || putLabels(db, id, transactions)); // some accounts' responses list no labels
    });
}

bool ScanForms::store(qint64 id, const QList<QByteArray> &documents)
{
    return m_log.change([&](Database &db) {
        qint64 number = 0;
        for (const QByteArray &document : documents) {
            if (!execute(db, "INSERT INTO scan_form_documents (form_id, number, document) VALUES (?, ?, ?)", id,
                         ++number, std::optional(document)))
                return false;
        }
        return execute(db, "UPDATE scan_forms SET state = ? WHERE id = ?",
                       QString::fromLatin1(documents.isEmpty() ? "EMPTY" : "READY"), id);
    });
}

bool ScanForms::remove(qint64 id)
{
    return m_log.change(
        [&](Database &db) { return putLabels(db, id, {}) && execute(db, "DELETE FROM scan_forms WHERE id = ?", id); });
}

bool ScanForms::hasForms(const Database &db)
{
    return ShipmentLogRows::hasTable(db, "scan_forms");
}

LogRead<QList<ScanForm>> ScanForms::list(const QByteArray &condition) const
{
    return look<QList<ScanForm>>([&](const Database &db) -> std::optional<QList<ScanForm>> {
        QList<ScanForm> forms;
        Statement rows(db, "SELECT id, asked_at, test_mode, labels, manifest_id FROM scan_forms WHERE " + condition);
        Statement labels(db, "SELECT transaction_id FROM scan_form_labels WHERE form_id = ? ORDER BY rowid");
        while (rows.step()) {
            ScanForm &form = forms.emplaceBack(ScanForm{.id = rows.integer(0),
                                                        .askedAt = timeOf(rows.real(1)),
                                                        .testMode = rows.integer(2) != 0,
                                                        .labels = int(rows.integer(3)),
                                                        .manifestId = rows.text(4),
                                                        .transactions = {}});
            for (labels.bind(1, form.id); labels.step();)
                form.transactions += labels.text(0);
            if (!labels.isComplete())
                return std::nullopt;
            labels.reset();
        }
        return rows.isComplete() ? std::optional(forms) : std::nullopt;
    });
}

LogRead<QList<ScanForm>> ScanForms::underWay(bool testMode) const
{
    return list("state IN ('ASKED', 'MADE') AND test_mode = " + QByteArray::number(int(testMode)) + " ORDER BY id");
}

LogRead<QList<ScanForm>> ScanForms::finished(int limit) const
{
    return list("state = 'READY' ORDER BY id DESC LIMIT " + QByteArray::number(limit));
}

LogRead<bool> ScanForms::knowsManifest(const QString &manifestId) const
{
    return look<bool>([&](const Database &db) -> std::optional<bool> {
        Statement query(db, "SELECT 1 FROM scan_forms WHERE manifest_id = ?");
        query.bind(1, manifestId);
        const bool known = query.step();
        return known || query.isComplete() ? std::optional(known) : std::nullopt;
    });
}

LogRead<QList<QByteArray>> ScanForms::documents(qint64 id) const
{
    return look<QList<QByteArray>>([id](const Database &db) {
        QList<QByteArray> documents;
        Statement rows(db, "SELECT document FROM scan_form_documents WHERE form_id = ? ORDER BY number");
        for (rows.bind(1, id); rows.step();)
            documents += rows.blob(0).value_or(QByteArray());
        return rows.isComplete() ? std::optional(documents) : std::nullopt;
    });
}

LogRead<QList<ShipmentRecord>> ScanForms::labelsOn(const ScanForm &form) const
{
    return look<QList<ShipmentRecord>>([&](const Database &db) {
        Statement query(db, ShipmentLogRows::select +
                                QByteArray(" WHERE created_at >= ? AND created_at <= ? AND transaction_id IN (SELECT "
                                           "transaction_id FROM scan_form_labels WHERE form_id = ?) ORDER BY "
                                           "created_at, id"));
        query.bind(1, secondsOf(form.askedAt.addDays(-longestWait)));
        query.bind(2, secondsOf(form.askedAt.addDays(1)));
        query.bind(3, form.id);
        return ShipmentLogRows::allOf(db, query);
    });
}

LogRead<std::optional<QDateTime>> ScanForms::formWith(const QString &transactionId) const
{
    using When = std::optional<QDateTime>;
    return look<When>([&](const Database &db) -> std::optional<When> {
        Statement query(db, "SELECT max(asked_at) FROM scan_forms JOIN scan_form_labels ON form_id = id WHERE "
                            "transaction_id = ? AND state <> 'ASKED'");
        query.bind(1, transactionId);
        if (!query.step())
            return std::nullopt;
        return query.kind(0) == Statement::Kind::null ? When() : When(timeOf(query.real(0)));
    });
}

} // namespace parcelory
