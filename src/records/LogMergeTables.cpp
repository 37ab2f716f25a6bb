#include "records/LogMergeTables.h"

#include "records/ShipmentLogRows.h"

#include <optional>

namespace parcelory::LogMerge {

namespace {

QByteArrayList columnsOf(const Database &db, const QByteArray &table)
{
    QByteArrayList columns;
    Statement names(db, "SELECT name FROM pragma_table_info('" + table + "')");
    while (names.step())
        columns += names.text(0).toUtf8();
    return columns;
}

} // namespace

void bindValues(const Statement &row, qsizetype columns, Statement &insert, int parameter)
{
    for (int column = 0; column < columns; ++column, ++parameter) {
        switch (row.kind(column)) {
        case Statement::Kind::null:
            insert.bind(parameter, std::optional<QByteArray>());
            break;
        case Statement::Kind::number:
            insert.bind(parameter, row.real(column));
            break;
        case Statement::Kind::text:
            insert.bindInPlace(parameter, row.utf8(column));
            break;
        case Statement::Kind::blob:
            insert.bind(parameter, std::optional(row.bytes(column).toByteArray()));
            break;
        }
    }
}

bool createLike(const Database &from, Database &to, const QByteArray &table)
{
    if (ShipmentLogRows::hasTable(to, table.constData()))
        return true;
    Statement made(from, "SELECT sql FROM sqlite_master WHERE tbl_name = '" + table +
                             "' AND sql IS NOT NULL ORDER BY type DESC");
    while (made.step()) {
        if (!to.exec(made.text(0).toUtf8().constData()))
            return false;
    }
    return true;
}

QByteArrayList commonColumns(const Database &from, const Database &to, const QByteArray &table,
                             const QByteArray &without)
{
    QByteArrayList columns = columnsOf(to, table);
    const QByteArrayList others = columnsOf(from, table);
    columns.removeIf([&](const QByteArray &name) { return name == without || !others.contains(name); });
    return columns;
}

} // namespace parcelory::LogMerge
