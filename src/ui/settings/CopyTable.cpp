#include "ui/settings/CopyTable.h"

#include "records/ShipmentStatus.h"
#include "ui/log/LogModel.h"

#include <QLocale>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct Row {
    QString id;
    RecordCopy copy;
};

QString reasonText(const Row &row)
{
    const QString &reason = row.copy.reason;
    if (reason == wordOf(CopyReason::daily))
        return u"Daily"_s;
    if (reason == wordOf(CopyReason::beforeImport))
        return u"Before an import"_s;
    if (reason == wordOf(CopyReason::beforeUpdate))
        return u"Before an update"_s;
    return reason == wordOf(CopyReason::byHand) ? u"By hand"_s : reason;
}

QString countText(const Row &row, int count)
{
    return row.copy.isGood() ? QLocale(QLocale::English, QLocale::UnitedStates).toString(count) : u"—"_s;
}

double timeNumber(const Row &row)
{
    return double(row.copy.madeAt.toMSecsSinceEpoch());
}

const RecordModel<Row>::Columns &columns()
{
    using enum ColumnKind;
    static const RecordModel<Row>::Columns table = {
        {{u"Made"_s, 165, 0, date}, [](const Row &row) { return dateTimeText(row.copy.madeAt); }, timeNumber},
        {{u"Why"_s, 143}, reasonText},
        {{u"Labels"_s, 92, 0, number},
         [](const Row &row) { return countText(row, row.copy.labels); },
         [](const Row &row) { return double(row.copy.labels); }},
        {{u"Addresses"_s, 100, 0, number},
         [](const Row &row) { return countText(row, row.copy.addresses); },
         [](const Row &row) { return double(row.copy.addresses); }},
        {{u"Size"_s, 94, 0, number},
         [](const Row &row) { return row.copy.isGood() ? CopyTable::sizeText(row.copy.bytes()) : u"—"_s; },
         [](const Row &row) { return row.copy.bytes(); }},
        {{u"Check"_s, 0, 100},
         [](const Row &row) { return row.copy.isGood() ? u"Good"_s : u"Failed — "_s + row.copy.failure; }},
    };
    return table;
}

} // namespace

class CopyTable::Model : public RecordModel<Row> {
public:
    explicit Model(QObject *parent = nullptr) : RecordModel(columns(), parent) {}
};

CopyTable::CopyTable(QWidget *parent) : CopyTable(new Model, parent) {}

CopyTable::CopyTable(Model *model, QWidget *parent) : LogTable(u"Copies"_s, model, parent), m_model(model) {}

void CopyTable::setCopies(const QList<RecordCopy> &copies)
{
    QList<Row> rows;
    for (const RecordCopy &copy : copies)
        rows.append({.id = copy.folder, .copy = copy});
    replaceRows([&] { m_model->setRecords(rows); });
}

QString CopyTable::sizeText(double bytes)
{
    return QLocale(QLocale::English, QLocale::UnitedStates)
        .formattedDataSize(qint64(bytes), bytes < 1e9 ? 0 : 1, QLocale::DataSizeSIFormat);
}

} // namespace parcelory
