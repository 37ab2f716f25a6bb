#pragma once

#include "devices/zpl/ZplLabel.h"

#include <QPainterPath>
#include <QSizeF>

#include <memory>

namespace parcelory {

/// A text as an outline in dots. The origin is the top left corner of its area.
struct ZplOutline {
    QPainterPath path;
    QSizeF size;         ///< of the area: the text's width, or the block's
    double baseline = 0; ///< of the line that a ^FT command places
};

/// Sets texts. Needs a QGuiApplication for its fonts, but works on any thread; one object for each thread.
class ZplTypesetter {
public:
    ZplTypesetter();
    ~ZplTypesetter();

    ZplOutline outline(const ZplText &text) const;
    /// The width of a single line in dots.
    double widthOf(const QString &text, const ZplFont &font) const;

private:
    struct Faces;
    struct Line;
    QList<Line> wrapped(const ZplText &text, double indent) const;
    QPainterPath lineOutline(const QString &text, const ZplFont &font) const;

    std::unique_ptr<Faces> m_faces;
};

} // namespace parcelory
