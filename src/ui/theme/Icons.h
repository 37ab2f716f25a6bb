#pragma once

#include "ui/theme/Tokens.h"

#include <QIcon>
#include <QPixmap>
#include <QRect>
#include <QString>

class QPainter;

namespace parcelory {

/// One of the program's drawings ("ui_printer") in a colour of the theme. It is drawn anew when the theme or the
/// screen's pixel ratio changes, so an icon is set once.
QIcon themeIcon(const QString &name, Token ink = &Tokens::text);

/// The drawing as a picture of `size` logical pixels.
QPixmap iconPixmap(const QString &name, const QColor &ink, int size, qreal pixelRatio);

void paintIcon(QPainter &painter, const QString &name, const QRect &place, const QColor &ink);

} // namespace parcelory
