#include "ui/log/MasterLogTable.h"

#include "carrier/MasterEntry.h"
#include "core/Text.h"
#include "ui/log/LogModel.h"
#include "ui/log/LogTable.h"
#include "ui/parts/Badge.h"

#include <QLocale>

#include <limits>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using Entry = MasterEntry;

QString formatted(const Entry &entry, const QString &pattern)
{
    return entry.date ? QLocale::c().toString(*entry.date, pattern) : QString();
}

double momentNumber(const Entry &entry)
{
    return entry.date ? double(entry.date->toMSecsSinceEpoch()) : std::numeric_limits<double>::lowest();
}

double timeOfDayNumber(const Entry &entry)
{
    return entry.date ? entry.date->time().msecsSinceStartOfDay() : -1;
}

QList<RowBadge> badges(const Entry &entry)
{
    return entry.test ? QList<RowBadge>{{u"TEST"_s, BadgeKind::test}} : QList<RowBadge>();
}

const MasterLogModel::Columns &columns()
{
    using enum ColumnKind;
    static const MasterLogModel::Columns table = {
        {{u"Date"_s, 74, 0, date}, [](const Entry &entry) { return formatted(entry, u"MM/dd/yy"_s); }, momentNumber},
        {{u"Time"_s, 76, 0, date}, [](const Entry &entry) { return formatted(entry, u"h:mm AP"_s); }, timeOfDayNumber},
        {{u"Recipient"_s, 150, 110}, [](const Entry &entry) { return entry.recipient; }},
        {{u"Company"_s, 110, 60}, [](const Entry &entry) { return entry.company; }},
        {{u"City/State"_s, 116, 84}, [](const Entry &entry) { return entry.place; }},
        {{u"Country"_s, 80, 66}, [](const Entry &entry) { return entry.country; }},
        {{u"Service"_s, 0, 80}, [](const Entry &entry) { return entry.service; }},
        {{u"Postage"_s, 84, 0, number},
         [](const Entry &entry) { return u'$' + fixed(entry.amount, 2); },
         [](const Entry &entry) { return entry.amount; }},
        {{u"Tracking"_s, 208, 0, tracking}, [](const Entry &entry) { return groupsOfFour(entry.tracking); }},
        {{u"Status"_s, 148, 118}, [](const Entry &entry) { return statusDisplay(entry.status); }, nullptr, badges},
    };
    return table;
}

} // namespace

MasterLogTable::MasterLogTable(QWidget *parent) : MasterLogTable(new MasterLogModel(columns(), nullptr), parent) {}

MasterLogTable::MasterLogTable(MasterLogModel *model, QWidget *parent)
    : LogTable(u"Master log"_s, model, parent), m_model(model)
{
}

void MasterLogTable::setEntries(const QList<MasterEntry> &entries)
{
    replaceRows([&] { m_model->setRecords(entries); });
}

} // namespace parcelory
