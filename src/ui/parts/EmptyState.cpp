#include "ui/parts/EmptyState.h"

#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QVBoxLayout>

namespace parcelory {

EmptyState::EmptyState(const QString &icon, const QString &sentence, QWidget *parent)
    : QWidget(parent), m_icon(new IconView(icon, 36)),
      m_sentence(new TextLabel(sentence, FontRole::body, &Tokens::muted)), m_column(new QVBoxLayout(this))
{
    m_column->setSpacing(10);
    m_column->addStretch(2);
    m_column->addWidget(m_icon, 0, Qt::AlignHCenter);
    m_column->addWidget(m_sentence);
    m_sentence->setAlignment(Qt::AlignHCenter);
    m_sentence->setWordWrap(true);
    m_column->addStretch(3);
}

void EmptyState::set(const QString &icon, const QString &sentence)
{
    m_icon->set(icon, &Tokens::muted);
    m_sentence->setText(sentence);
}

void EmptyState::append(QWidget *widget, Qt::Alignment alignment)
{
    m_column->insertWidget(m_column->count() - 1, widget, 0, alignment);
}

} // namespace parcelory
