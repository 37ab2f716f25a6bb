#include "ui/log/ShipmentTable.h"

#include "core/Text.h"
#include "records/ShipmentRecord.h"
#include "ui/log/LogModel.h"
#include "ui/log/LogTable.h"
#include "ui/log/ShipmentTexts.h"

#include <limits>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

double timeNumber(const ShipmentRecord &record)
{
    return double(record.createdAt.toMSecsSinceEpoch());
}

double balanceNumber(const ShipmentRecord &record)
{
    // An imported log may contain any text here.
    return decimal(QString(record.balance).remove(u'$').remove(u',')).value_or(std::numeric_limits<double>::lowest());
}

using Record = ShipmentRecord;

const RecordModel<Record>::Columns &columns() // in the order of ShipmentModel::Column
{
    using enum ColumnKind;
    static const RecordModel<Record>::Columns table = {
        {{u"Date/Time"_s, 136, 0, date}, timeText, timeNumber},
        {{u"Postage"_s, 84, 0, number}, postageText, [](const Record &record) { return record.postage; }},
        {{u"Recipient"_s, 220, 150}, recipientName, nullptr, badgesOf},
        {{u"Services"_s, 0, 100}, [](const Record &record) { return record.services; }},
        {{u"Tracking ID"_s, 214, 0, tracking}, [](const Record &record) { return groupsOfFour(record.tracking); }},
        {{u"Weight"_s, 86, 0, number},
         [](const Record &record) { return record.weight; },
         [](const Record &record) { return record.weightOz; }},
        {{u"Balance"_s, 80, 0, number}, [](const Record &record) { return record.balance; }, balanceNumber},
        {{u"Description"_s, 116, 90}, [](const Record &record) { return record.descriptionText; }},
        {{u"Ref #"_s, 64}, [](const Record &record) { return record.reference; }},
    };
    return table;
}

} // namespace

ShipmentModel::ShipmentModel(QObject *parent) : RecordModel(columns(), parent) {}

ShipmentTable::ShipmentTable(QWidget *parent) : ShipmentTable(new ShipmentModel, parent) {}

ShipmentTable::ShipmentTable(ShipmentModel *model, QWidget *parent)
    : LogTable(u"Mailing log"_s, model, parent), m_model(model)
{
}

void ShipmentTable::setRecords(const QList<ShipmentRecord> &records)
{
    replaceRows([&] { m_model->setRecords(records); });
}

} // namespace parcelory
