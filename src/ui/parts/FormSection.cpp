#include "ui/parts/FormSection.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace parcelory {

namespace {

constexpr int gap = 8, rowGap = 4, denseRowGap = 2;

TextLabel *rowLabel(const QString &text, FontRole role)
{
    auto *label = new TextLabel(text, role, &Tokens::muted);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

} // namespace

FormRow::FormRow(const QString &label, int width, QWidget *parent) : QWidget(parent), m_row(new QHBoxLayout(this))
{
    m_row->setContentsMargins(0, 0, 0, 0);
    m_row->setSpacing(gap);
    setMinimumHeight(Theme::current().scaled(Theme::fieldHeight));
    say(label, width);
}

FormRow *FormRow::add(QWidget *widget, int stretch)
{
    m_row->addWidget(widget, stretch, Qt::AlignVCenter);
    return this;
}

FormRow *FormRow::say(const QString &text, int width, FontRole role)
{
    auto *label = rowLabel(text, role);
    if (width > 0)
        label->setFixedWidth(Theme::current().scaled(width));
    m_row->addWidget(label, 0, Qt::AlignVCenter);
    return this;
}

FormRow *FormRow::fill()
{
    m_row->addStretch(1);
    return this;
}

FormSection::FormSection(const QString &title, QWidget *parent) : QWidget(parent), m_rows(new QVBoxLayout)
{
    const Theme &theme = Theme::current();
    setAccessibleName(QString(title).replace(u'\n', u' '));
    setAccessibleRole(this, QAccessible::Grouping);
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(gap);
    const bool several = title.contains(u'\n');
    auto *name = new TextLabel(title, several ? FontRole::captionStrong : FontRole::strong);
    name->setFixedWidth(theme.scaled(gutter));
    name->setMinimumHeight(theme.scaled(Theme::fieldHeight));
    name->setAlignment(Qt::AlignLeft | (several ? Qt::AlignTop : Qt::AlignVCenter));
    columns->addWidget(name, 0, Qt::AlignTop);
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(rowGap);
    columns->addLayout(m_rows, 1);
}

void FormSection::setDense(bool dense)
{
    m_rows->setSpacing(dense ? denseRowGap : rowGap);
}

FormRow *FormSection::addRow(const QString &label)
{
    auto *row = new FormRow(label);
    m_rows->addWidget(row);
    return row;
}

void FormSection::addBelowFields(QWidget *widget)
{
    auto *line = new QHBoxLayout;
    line->setContentsMargins(Theme::current().scaled(FormRow::labelWidth) + gap, 0, 0, 0);
    line->addWidget(widget, 1);
    m_rows->addLayout(line);
}

} // namespace parcelory
