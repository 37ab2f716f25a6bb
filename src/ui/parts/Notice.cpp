#include "ui/parts/Notice.h"

#include "ui/parts/Accessibility.h"
#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>

namespace parcelory {

Notice::Notice(const QString &icon, Token ink, FontRole role, QWidget *parent)
    : QWidget(parent), m_icon(new IconView(icon, 16, ink)), m_text(new TextLabel({}, role, ink))
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addWidget(m_icon, 0, Qt::AlignTop);
    row->addWidget(m_text, 1);
    m_text->setWordWrap(true);
    setAccessibleRole(this, QAccessible::Notification);
    setVisible(false);
}

void Notice::setText(const QString &text)
{
    m_text->setText(text);
    nameWidget(this, text);
    setVisible(!text.isEmpty());
}

void Notice::setLook(const QString &icon, Token ink)
{
    m_icon->set(icon, ink);
    m_icon->setVisible(!icon.isEmpty());
    m_text->setInk(ink);
}

} // namespace parcelory
