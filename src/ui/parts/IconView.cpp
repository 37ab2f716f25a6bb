#include "ui/parts/IconView.h"

#include "ui/theme/Icons.h"
#include "ui/theme/Tokens.h"

#include <QPainter>

#include <utility>

namespace parcelory {

IconView::IconView(QString name, int size, Token ink, QWidget *parent)
    : QWidget(parent), m_name(std::move(name)), m_size(Theme::current().scaled(size)), m_ink(ink)
{
    setFixedSize(m_size, m_size);
}

void IconView::set(const QString &name, Token ink)
{
    if (name == m_name && ink == m_ink)
        return;
    m_name = name;
    m_ink = ink;
    update();
}

void IconView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintIcon(painter, m_name, rect(), Theme::current().color(m_ink));
}

} // namespace parcelory
