#include "ui/settings/CopyTable.h"

#include "app/records/RestoreTexts.h"
#include "records/ShipmentStatus.h"
#include "ui/log/LogModel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QLocale>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString goodText = u"Good"_s;

struct Row {
    QString id;
    RecordCopy copy;
};

QString reasonText(const Row &row)
{
    return RestoreTexts::reasonOf(row.copy);
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
         [](const Row &row) { return row.copy.isGood() ? RestoreTexts::sizeText(row.copy.bytes()) : u"—"_s; },
         [](const Row &row) { return row.copy.bytes(); }},
        {{u"Check"_s, 0, 100},
         [](const Row &row) { return row.copy.isGood() ? goodText : u"Failed — "_s + row.copy.failure; }},
    };
    return table;
}

} // namespace

class CopyTable::Model : public RecordModel<Row> {
public:
    explicit Model(QObject *parent = nullptr) : RecordModel(columns(), parent) {}

    QVariant data(const QModelIndex &index, int role) const override
    {
        const bool isCheck = index.isValid() && look(index.column()).title == u"Check";
        const bool isGood = isCheck && text(recordAt(index.row()), index.column()) == goodText;
        if (isCheck && role == Qt::DecorationRole)
            return isGood ? m_good : m_failed;
        if (isCheck && !isGood && role == Qt::ForegroundRole)
            return Theme::current().tokens().bad;
        return RecordModel::data(index, role);
    }

private:
    const QIcon m_good = themeIcon(u"ui_check"_s, &Tokens::ok), m_failed = themeIcon(u"ui_error"_s, &Tokens::bad);
};

CopyTable::CopyTable(QWidget *parent) : CopyTable(new Model, parent) {}

CopyTable::CopyTable(Model *model, QWidget *parent) : LogTable(u"Copies"_s, model, parent), m_model(model)
{
    connect(this, &QTableView::doubleClicked, this, &CopyTable::restoreRequested);
}

void CopyTable::setCopies(const QList<RecordCopy> &copies)
{
    if (copies == m_shown)
        return;
    m_shown = copies;
    QList<Row> rows;
    for (const RecordCopy &copy : copies)
        rows.append({.id = copy.folder, .copy = copy});
    replaceRows([&] { m_model->setRecords(rows); });
}

void CopyTable::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        emit restoreRequested();
    else
        LogTable::keyPressEvent(event);
}

} // namespace parcelory
