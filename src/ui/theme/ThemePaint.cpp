#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <QWidget>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int markWidth = 28; ///< a field's arrow and the space around it

/// The stroke of an icon-like mark.
QPen stroke(const QColor &color, qreal width = 1.5)
{
    return {color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

bool has(const QStyleOption &option, QStyle::State state)
{
    return option.state & state;
}

} // namespace

void Theme::drawField(QPainter &painter, const QRect &rect, bool enabled, bool focus, bool fault) const
{
    const Tokens &t = tokens();
    const bool ring = focus || fault;
    const QColor edge = fault ? t.bad : focus ? t.accent : enabled ? t.control : t.button;
    const QColor fill = fault ? t.badTint : enabled ? t.sheet : t.disabledFill;
    const qreal width = ring ? 2 : 1;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(edge, width));
    painter.setBrush(fill);
    const qreal inset = width / 2;
    painter.drawRoundedRect(QRectF(rect).adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    painter.restore();
}

void Theme::drawFocusRing(QPainter &painter, const QRectF &rect, qreal corner) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(tokens().accent, 2));
    painter.drawRoundedRect(rect.adjusted(1, 1, -1, -1), corner, corner);
    painter.restore();
}

void Theme::drawCheckMark(QPainter &painter, const QRect &rect, const QStyleOption &option) const
{
    const Tokens &t = tokens();
    const bool on = has(option, State_On), enabled = has(option, State_Enabled);
    const QRectF box = QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(on && enabled ? t.accent : enabled ? t.control : t.button, 1));
    painter.setBrush(on && enabled ? t.accent : enabled ? t.sheet : t.disabledFill);
    painter.drawRoundedRect(box, 3.5, 3.5);
    if (!on)
        return;
    painter.setPen(stroke(enabled ? t.onAccent : t.disabledText, 2));
    const qreal w = box.width(), h = box.height();
    painter.drawPolyline(QPolygonF({box.topLeft() + QPointF(w * .25, h * .53), box.topLeft() + QPointF(w * .43, h * .7),
                                    box.topLeft() + QPointF(w * .76, h * .33)}));
}

void Theme::drawRadioMark(QPainter &painter, const QRect &rect, const QStyleOption &option) const
{
    const Tokens &t = tokens();
    const bool on = has(option, State_On), enabled = has(option, State_Enabled);
    const QColor edge = !enabled ? t.button : on ? t.accent : t.control;
    const qreal width = on ? rect.width() * 0.3 : 1;
    painter.setPen(QPen(edge, width));
    painter.setBrush(on && enabled ? t.onAccent : t.sheet);
    painter.drawEllipse(QRectF(rect).adjusted(width / 2, width / 2, -width / 2, -width / 2));
}

void Theme::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                          const QWidget *widget) const
{
    const Tokens &t = tokens();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    switch (element) {
    case PE_PanelLineEdit: {
        const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
        if (frame && frame->lineWidth > 0)
            drawField(*painter, option->rect, has(*option, State_Enabled), has(*option, State_HasFocus),
                      widget && widget->property("fault").toBool());
        break;
    }
    case PE_FrameLineEdit:
        break;
    case PE_IndicatorCheckBox:
        drawCheckMark(*painter, option->rect, *option);
        break;
    case PE_IndicatorRadioButton:
        drawRadioMark(*painter, option->rect, *option);
        break;
    case PE_FrameFocusRect:
        drawFocusRing(*painter, option->rect, 4);
        break;
    case PE_FrameTabBarBase:
        break;
    case PE_PanelTipLabel:
        painter->setPen(t.button);
        painter->setBrush(t.sheet);
        painter->drawRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5));
        break;
    default:
        painter->restore();
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    painter->restore();
}

void Theme::drawTab(QPainter &painter, const QStyleOption *option) const
{
    const Tokens &t = tokens();
    if (has(*option, State_Selected)) {
        const QRect r = option->rect;
        painter.fillRect(QRect(r.left(), r.bottom() - 1, r.width(), 2), t.accent);
    }
    if (has(*option, State_HasFocus))
        drawFocusRing(painter, QRectF(option->rect).adjusted(2, 6, -2, -6), 4);
}

void Theme::drawTabText(QPainter &painter, const QStyleOption *option) const
{
    const auto *tab = qstyleoption_cast<const QStyleOptionTab *>(option);
    if (!tab)
        return;
    const bool current = has(*option, State_Selected), hot = has(*option, State_MouseOver);
    painter.setFont(font(current ? FontRole::strong : FontRole::button));
    painter.setPen(current || hot ? tokens().text : tokens().muted);
    const int badge = tab->rightButtonSize.width(); // with the same room at its left
    painter.drawText(option->rect.adjusted(0, 0, badge > 0 ? -badge - 6 : 0, 0), Qt::AlignCenter | Qt::TextHideMnemonic,
                     tab->text);
}

void Theme::drawHeader(QPainter &painter, const QStyleOption *option) const
{
    const Tokens &t = tokens();
    const QRect r = option->rect;
    painter.fillRect(r, t.header);
    painter.fillRect(QRect(r.left(), r.bottom(), r.width(), 1), t.line);
    const auto *header = qstyleoption_cast<const QStyleOptionHeader *>(option);
    if (header && header->position != QStyleOptionHeader::End && header->position != QStyleOptionHeader::OnlyOneSection)
        painter.fillRect(QRect(r.right(), r.top(), 1, r.height()), t.line);
}

void Theme::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                        const QWidget *widget) const
{
    switch (element) {
    case CE_TabBarTabShape:
        drawTab(*painter, option);
        return;
    case CE_TabBarTabLabel:
        drawTabText(*painter, option);
        return;
    case CE_HeaderSection:
        drawHeader(*painter, option);
        return;
    case CE_HeaderEmptyArea:
        painter->fillRect(option->rect, tokens().header);
        return;
    case CE_HeaderLabel:
        if (const auto *header = qstyleoption_cast<const QStyleOptionHeader *>(option)) {
            painter->setFont(font(FontRole::captionStrong));
            painter->setPen(tokens().muted);
            const QRect inner = header->rect.adjusted(6, 0, -6, 0);
            painter->drawText(inner, int(header->textAlignment) | Qt::AlignVCenter,
                              painter->fontMetrics().elidedText(header->text, Qt::ElideRight, inner.width()));
        }
        return;
    case CE_ComboBoxLabel:
        if (const auto *box = qstyleoption_cast<const QStyleOptionComboBox *>(option)) {
            QRect inner = box->rect.adjusted(8, 0, -markWidth, 0);
            if (!box->currentIcon.isNull()) {
                const QRect place(inner.left(), inner.center().y() - 9, 20, 20);
                box->currentIcon.paint(painter, place, Qt::AlignCenter,
                                       has(*box, State_Enabled) ? QIcon::Normal : QIcon::Disabled);
                inner.setLeft(place.right() + 7);
            }
            painter->setPen(has(*box, State_Enabled) ? tokens().text : tokens().disabledText);
            painter->drawText(inner, Qt::AlignVCenter | Qt::AlignLeft,
                              painter->fontMetrics().elidedText(box->currentText, Qt::ElideRight, inner.width()));
        }
        return;
    case CE_Splitter: {
        const QRect r = option->rect;
        const bool flat = r.width() > r.height();
        painter->fillRect(r, tokens().sheet);
        painter->fillRect(flat ? QRect(r.left(), r.center().y(), r.width(), 1)
                               : QRect(r.center().x(), r.top(), 1, r.height()),
                          tokens().line);
        return;
    }
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void Theme::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                               const QWidget *widget) const
{
    if (control == CC_ScrollBar) {
        const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
        painter->fillRect(option->rect, tokens().panel);
        const bool across = bar && bar->orientation == Qt::Horizontal;
        const QRect handle = proxy()->subControlRect(control, option, SC_ScrollBarSlider, widget);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(has(*option, State_MouseOver) ? tokens().control : tokens().button);
        painter->drawRoundedRect(across ? handle.adjusted(1, 3, -1, -3) : handle.adjusted(3, 1, -3, -1), 3, 3);
        painter->restore();
        return;
    }
    if (control != CC_ComboBox) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    const bool enabled = has(*option, State_Enabled);
    drawField(*painter, option->rect, enabled, has(*option, State_HasFocus),
              widget && widget->property("fault").toBool());
    const QRect r = option->rect;
    const QRect mark(r.right() - markWidth + 8, r.center().y() - 7, 16, 16);
    const Token ink = enabled ? &Tokens::muted : &Tokens::disabledText;
    paintIcon(*painter, u"ui_chevron_down"_s, mark, color(ink));
}

QRect Theme::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                            const QWidget *widget) const
{
    if (control == CC_ScrollBar && (part == SC_ScrollBarAddLine || part == SC_ScrollBarSubLine))
        return {}; // no arrows
    if (control != CC_ComboBox)
        return QProxyStyle::subControlRect(control, option, part, widget);
    const QRect r = option->rect;
    switch (part) {
    case SC_ComboBoxArrow:
        return {r.right() - markWidth + 1, r.top(), markWidth, r.height()};
    case SC_ComboBoxEditField:
        return r.adjusted(7, 2, -markWidth, -2);
    default:
        return QProxyStyle::subControlRect(control, option, part, widget);
    }
}

} // namespace parcelory
