#pragma once

#include "ui/theme/Tokens.h"

#include <QIcon>
#include <QPixmap>
#include <QRect>
#include <QString>

class QPainter;

namespace parcelory {

/// One of the program's icons ("ui_printer") in a color of the theme. It redraws itself when the theme or the screen's
/// pixel ratio changes, so it needs to be set only once.
QIcon themeIcon(const QString &name, Token ink = &Tokens::text);

/// The icon as a pixmap of `size` logical pixels.
QPixmap iconPixmap(const QString &name, const QColor &ink, int size, qreal pixelRatio);

void paintIcon(QPainter &painter, const QString &name, const QRect &place, const QColor &ink);

} // namespace parcelory
