#include "devices/zpl/ZplPainter.h"

#include "core/AppError.h"
#include "devices/zpl/BarcodeModules.h"
#include "devices/zpl/ZplTypesetter.h"

#include <QGuiApplication>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int widest = 2400, longest = 4800;

int degrees(ZplTurn turn)
{
    return int(turn) * 90;
}

/// Where an area of `size` at the element's place begins, and how it is turned: the map from the area to the label.
/// `baseline` is the height in the area that a ^FT command places.
QTransform mapOf(const ZplElement &element, ZplTurn turn, QSizeF size, double baseline)
{
    QTransform map;
    if (element.isOnBaseline) {
        map.translate(element.x, element.y).rotate(degrees(turn));
        return map.translate(element.isRightAligned ? -size.width() : 0, -baseline);
    }
    const bool isUpright = turn == ZplTurn::none || turn == ZplTurn::half;
    const QSizeF shown = isUpright ? size : size.transposed();
    map.translate(element.x - (element.isRightAligned ? shown.width() : 0), element.y);
    switch (turn) {
    case ZplTurn::none:
        return map;
    case ZplTurn::quarter:
        return map.translate(shown.width(), 0).rotate(90);
    case ZplTurn::half:
        return map.translate(shown.width(), shown.height()).rotate(180);
    case ZplTurn::threeQuarters:
        return map.translate(0, shown.height()).rotate(270);
    }
    return map;
}

class Painter {
public:
    Painter(QImage &image, QStringList &notDrawn) : m_painter(&image), m_notDrawn(notDrawn) {}

    /// Draws the element and returns the area that it takes.
    QRect draw(const ZplElement &element)
    {
        m_isReversed = element.isReversed;
        return std::visit([&](const auto &shape) { return paint(element, shape); }, element.shape);
    }

private:
    QRect paint(const ZplElement &element, const ZplText &text);
    QRect paint(const ZplElement &element, const ZplBox &box);
    QRect paint(const ZplElement &element, const ZplEllipse &ellipse);
    QRect paint(const ZplElement &element, const ZplDiagonal &line);
    QRect paint(const ZplElement &element, const ZplGraphic &graphic);
    QRect paint(const ZplElement &element, const ZplBarcode &code);
    void fill(const QPainterPath &path, bool isWhite = false);
    void dots(const QImage &picture, const QTransform &map);
    QRect corner(const ZplElement &element, int width, int height) const;
    QColor color(bool isWhite) const { return isWhite != m_isReversed ? Qt::white : Qt::black; }
    void choose();

    QPainter m_painter;
    QStringList &m_notDrawn;
    ZplTypesetter m_type;
    bool m_isReversed = false;
};

/// A reversed element inverts what is below it: the difference to white.
void Painter::choose()
{
    m_painter.setCompositionMode(m_isReversed ? QPainter::CompositionMode_Difference
                                              : QPainter::CompositionMode_SourceOver);
}

void Painter::fill(const QPainterPath &path, bool isWhite)
{
    choose();
    m_painter.fillPath(path, color(isWhite));
}

/// Draws the set dots of a picture. They stay whole: the map only moves and turns by right angles.
void Painter::dots(const QImage &picture, const QTransform &map)
{
    choose();
    const QRectF area = map.mapRect(QRectF(QPointF(), QSizeF(picture.size())));
    const QTransform turn(map.m11(), map.m12(), map.m21(), map.m22(), 0, 0);
    m_painter.drawImage(area.topLeft().toPoint(), turn.isIdentity() ? picture : picture.transformed(turn));
}

QRect Painter::corner(const ZplElement &element, int width, int height) const
{
    return {element.x - (element.isRightAligned ? width : 0), element.y - (element.isOnBaseline ? height : 0), width,
            height};
}

QRect Painter::paint(const ZplElement &element, const ZplText &text)
{
    const ZplOutline outline = m_type.outline(text);
    const QTransform map = mapOf(element, text.turn, outline.size, outline.baseline);
    fill(map.map(outline.path));
    return map.mapRect(QRectF(QPointF(), outline.size)).toAlignedRect();
}

QRect Painter::paint(const ZplElement &element, const ZplBox &box)
{
    const QRect outer = corner(element, box.width, box.height);
    const int shorter = std::min(box.width, box.height);
    const QRect inner = outer.adjusted(box.thickness, box.thickness, -box.thickness, -box.thickness);
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    if (box.rounding == 0) {
        path.addRect(outer);
        if (inner.isValid() && box.thickness * 2 < shorter)
            path.addRect(inner);
    } else {
        const double radius = box.rounding / 8.0 * shorter / 2;
        path.addRoundedRect(outer, radius, radius);
        if (inner.isValid() && box.thickness * 2 < shorter)
            path.addRoundedRect(inner, std::max(radius - box.thickness, 0.0), std::max(radius - box.thickness, 0.0));
    }
    fill(path, box.isWhite);
    return outer;
}

QRect Painter::paint(const ZplElement &element, const ZplEllipse &ellipse)
{
    const QRect outer = corner(element, ellipse.width, ellipse.height);
    const int pen = ellipse.thickness;
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    path.addEllipse(outer);
    if (pen * 2 < std::min(ellipse.width, ellipse.height))
        path.addEllipse(outer.adjusted(pen, pen, -pen, -pen));
    fill(path, ellipse.isWhite);
    return outer;
}

QRect Painter::paint(const ZplElement &element, const ZplDiagonal &line)
{
    const QRectF area = corner(element, line.width, line.height);
    const double pen = std::min(line.thickness, line.width);
    const double top = line.rises ? area.right() - pen : area.left(),
                 bottom = line.rises ? area.left() : area.right() - pen;
    QPainterPath path(QPointF(top, area.top()));
    path.lineTo(top + pen, area.top());
    path.lineTo(bottom + pen, area.bottom());
    path.lineTo(bottom, area.bottom());
    path.closeSubpath();
    fill(path, line.isWhite);
    return area.toRect();
}

QRect Painter::paint(const ZplElement &element, const ZplGraphic &graphic)
{
    const int width = std::min(graphic.bytesPerRow * 8, widest * 2);
    const int height = std::min(int(graphic.bits.size() / graphic.bytesPerRow), longest * 2);
    if (height == 0)
        return {};
    QImage picture(reinterpret_cast<const uchar *>(graphic.bits.constData()), width, height, graphic.bytesPerRow,
                   QImage::Format_Mono);
    picture.setColorTable({qRgba(0, 0, 0, 0), color(false).rgba()});
    if (graphic.scaleX > 1 || graphic.scaleY > 1)
        picture = picture.scaled(std::min(width * graphic.scaleX, widest * 2),
                                 std::min(height * graphic.scaleY, longest * 2));
    const QRect area = corner(element, picture.width(), picture.height());
    dots(picture.convertToFormat(QImage::Format_ARGB32_Premultiplied),
         QTransform::fromTranslate(area.left(), area.top()));
    return area;
}

QRect Painter::paint(const ZplElement &element, const ZplBarcode &code)
{
    const std::optional<BarcodeDots> bars = barcodeDots(code);
    if (!bars) {
        m_notDrawn += code.command;
        return {};
    }
    QImage picture(bars->width, bars->height, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter pen(&picture);
    int y = 0;
    for (const BarcodeDots::Row &row : bars->rows) {
        int x = 0;
        bool isBar = true;
        for (const int width : row.widths) {
            if (isBar)
                pen.fillRect(x, y, width, row.height, color(false));
            x += width;
            isBar = !isBar;
        }
        y += row.height;
    }
    pen.end();
    const QSizeF size = picture.size();
    const QTransform map = mapOf(element, code.turn, size, size.height());
    dots(picture, map);
    QRectF area(QPointF(), size);
    if (code.hasLineBelow || code.hasLineAbove) {
        // Font A grows with the bars.
        const ZplOutline line = m_type.outline(
            ZplText{.text = bars->line, .font = {.name = 'A', .height = 9 * code.module, .width = 5 * code.module}});
        constexpr int gap = 6;
        const double above = code.hasLineAbove ? -line.size.height() - gap : size.height() + gap;
        fill(map.map(line.path.translated((size.width() - line.size.width()) / 2, above)));
        area = area.united(QRectF(0, above, size.width(), line.size.height()));
    }
    return map.mapRect(area).toAlignedRect();
}

} // namespace

ZplPicture paintZpl(const ZplLabel &label, ZplDensity density, ZplView view)
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        throw AppError(u"Without a display the label can't be drawn."_s);
    const int inch = density == ZplDensity::dots8 ? 203 : 300;
    const int width = std::min(label.width > 0 ? label.width : 4 * inch, widest);
    const int height = std::min(label.length > 0 ? label.length : 6 * inch, longest);
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    ZplPicture picture;
    {
        Painter painter(image, picture.notDrawn);
        for (const ZplElement &element : label.elements)
            picture.places += painter.draw(element);
    }
    image = image.convertToFormat(QImage::Format_Grayscale8);
    const auto moved = [&](bool turns, bool mirrors) {
        image = image.transformed(turns ? QTransform().rotate(180) : QTransform().scale(-1, 1));
        for (QRect &place : picture.places) {
            if (turns || mirrors)
                place.moveLeft(width - place.left() - place.width());
            if (turns)
                place.moveTop(height - place.top() - place.height());
        }
    };
    if (label.isMirrored && view == ZplView::asPrinted)
        moved(false, true);
    if (label.isTurned && view == ZplView::asPrinted)
        moved(true, false);
    constexpr double millimeters = 1000;
    image.setDotsPerMeterX(int(millimeters * int(density)));
    image.setDotsPerMeterY(int(millimeters * int(density)));
    picture.image = image;
    return picture;
}

} // namespace parcelory
