#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QRect>
#include <QStringList>

#include <memory>

namespace parcelory {

/// A label or a page of it, as it is read.
struct LabelPage {
    QImage image;        ///< black on white, a pixel for each printed dot
    QList<QRect> places; ///< of the elements of ZPL, in pixels; see ZplPicture
};

/// Where an element of a label is; an empty area if it is not drawn.
struct LabelPlace {
    qsizetype page = 0;
    QRect area;
};

/// A label of any kind for the screen. Complete and immutable once it is drawn.
struct LabelPicture {
    QList<LabelPage> pages; ///< at least one
    QImage thumbnail;       ///< the first page at three times the size of a thumbnail
    int dotsPerInch = 203;
    QStringList notShown; ///< commands whose part of the label is missing in the picture
    /// Printed by 180°, if the printer's setting is off or on.
    bool isTurned = false, isTurnedBySetting = false;

    LabelPlace placeOf(qsizetype element) const;
    /// Around all of them that are on the first one's page.
    LabelPlace placeOf(const QList<qsizetype> &elements) const;
    /// "4 × 6 in"
    QString sizeText() const;
};

/// The size of a thumbnail in logical pixels.
constexpr QSize thumbnailSize(88, 132);

/// Draws ZPL, PDF or PNG. The pictures of the last labels are kept by their bytes, so a picture cannot be another
/// label's. May be called on any thread; throws AppError for bytes that are not a label or cannot be drawn.
std::shared_ptr<const LabelPicture> drawnLabel(const QByteArray &label);

QByteArray pngOf(const QImage &image);
/// All pages in their printed size.
QByteArray pdfOf(const LabelPicture &picture);

} // namespace parcelory
