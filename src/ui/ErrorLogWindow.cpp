#include "ui/ErrorLogWindow.h"

#include "core/Task.h"
#include "core/ports/Desktop.h"
#include "shell/ErrorLog.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RowTable.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/Toolbar.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHeaderView>
#include <QShortcut>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

enum Column { time, place, error, columnTotal };

} // namespace

void ErrorLogModel::setEntries(const QList<APIErrorEntry> &entries)
{
    beginResetModel();
    m_entries = entries;
    endResetModel();
}

int ErrorLogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

int ErrorLogModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columnTotal;
}

QVariant ErrorLogModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const APIErrorEntry &entry = m_entries[index.row()];
    if (role == RowTable::idRole)
        return entry.id;
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case time:
        return ErrorLog::timeText(entry.date);
    case place:
        return entry.context;
    default:
        return entry.detail;
    }
}

QVariant ErrorLogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const QString titles[] = {u"Time"_s, u"Where"_s, u"Error"_s};
    return orientation == Qt::Horizontal && role == Qt::DisplayRole ? titles[section] : QVariant();
}

ErrorLogWindow::ErrorLogWindow(ErrorLog &errors, Desktop &desktop, QWidget *parent)
    : QWidget(parent, Qt::Window), m_errors(errors), m_desktop(desktop), m_model(new ErrorLogModel(this)),
      m_count(new TextLabel({}, FontRole::body, &Tokens::muted)), m_table(new RowTable(u"Errors"_s)),
      m_pages(new QStackedLayout), m_refresh([this] { refresh(); })
{
    setWindowTitle(u"Error Log"_s);
    setMinimumSize(480, 200);
    resize(1000, 360);
    auto *sheet = new PanelFrame(&Tokens::sheet);
    auto *centered = new QVBoxLayout(sheet);
    centered->addWidget(new EmptyState(u"ui_success"_s, u"No errors on record."_s));
    m_pages->addWidget(makeTable());
    m_pages->addWidget(sheet);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(makeToolbar());
    rows->addLayout(m_pages, 1);
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    connect(&errors, &ErrorLog::entriesChanged, this, [this] { m_refresh.touch(); });
    refresh();
    m_table->setFocus();
}

QWidget *ErrorLogWindow::makeToolbar()
{
    auto *copy = new Button(u"Copy All"_s, Button::Kind::standard, u"ui_copy"_s);
    auto *clear = new Button(u"Clear"_s, Button::Kind::danger, u"ui_trash"_s);
    connect(copy, &QPushButton::clicked, this, [this] { m_desktop.copyText(m_errors.asText()); });
    connect(clear, &QPushButton::clicked, this,
            [this] { spawn([&errors = m_errors] { return errors.clearAsked(); }); });
    return (new Toolbar)->add(m_count)->fill()->add(copy)->add(clear);
}

QWidget *ErrorLogWindow::makeTable()
{
    const Theme &theme = Theme::current();
    m_table->setItemDelegate(new RowDelegate(m_table));
    m_table->setModel(m_model);
    m_table->setColumnWidth(time, theme.scaled(170));
    m_table->setColumnWidth(place, theme.scaled(170));
    m_table->horizontalHeader()->setSectionResizeMode(error, QHeaderView::Stretch);
    m_table->wrapTexts();
    connect(m_table, &RowTable::copyRequested, this, &ErrorLogWindow::copyChosen);
    return m_table;
}

void ErrorLogWindow::refresh()
{
    m_count->setText(m_errors.countText());
    m_table->replaceRows([this] { m_model->setEntries(m_errors.entries()); });
    m_pages->setCurrentIndex(m_errors.entries().isEmpty() ? 1 : 0);
}

/// Copies the chosen entry in the format of Copy All; without one, keeps the clipboard's content.
void ErrorLogWindow::copyChosen()
{
    const QModelIndex row = m_table->currentIndex();
    if (row.isValid())
        m_desktop.copyText(ErrorLog::lineOf(m_model->entryAt(row.row())));
}

} // namespace parcelory
