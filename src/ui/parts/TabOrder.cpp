#include "ui/parts/TabOrder.h"

#include <QBoxLayout>
#include <QLayout>
#include <QScrollArea>
#include <QSplitter>
#include <QWidget>

namespace parcelory {

namespace {

void collect(QWidget *widget, QWidgetList &order);

void collect(QLayout *layout, QWidgetList &order)
{
    const auto *box = qobject_cast<QBoxLayout *>(layout);
    const bool isBackwards = box && box->direction() == QBoxLayout::BottomToTop;
    for (int at = 0; at < layout->count(); ++at) {
        QLayoutItem *item = layout->itemAt(isBackwards ? layout->count() - 1 - at : at);
        if (QWidget *widget = item->widget())
            collect(widget, order);
        else if (QLayout *inner = item->layout())
            collect(inner, order);
    }
}

void collect(QWidget *widget, QWidgetList &order)
{
    if (auto *area = qobject_cast<QScrollArea *>(widget)) {
        if (area->widget())
            collect(area->widget(), order);
        return;
    }
    if (auto *splitter = qobject_cast<QSplitter *>(widget)) {
        for (int at = 0; at < splitter->count(); ++at)
            collect(splitter->widget(at), order);
        return;
    }
    if (widget->focusPolicy() != Qt::NoFocus) // also widgets that Tab skips at the moment
        order.append(widget);
    else if (widget->layout())
        collect(widget->layout(), order);
}

} // namespace

void orderTabsByLayout(QWidget *root)
{
    QWidgetList order;
    collect(root, order);
    for (qsizetype at = 1; at < order.size(); ++at)
        QWidget::setTabOrder(order[at - 1], order[at]);
}

} // namespace parcelory
