#pragma once

#include <QColor>
#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QRectF>
#include <QStringList>

namespace parcelory {

/// How a text of a printed document looks. Sizes are in points.
struct TextStyle {
    double size = 10;
    QColor color = Qt::black;
    bool bold = false;
    Qt::AlignmentFlag align = Qt::AlignLeft;
    double step = 0; ///< from line to line; 0 is the font's own
};

/// A sheet of a PDF that takes texts, rules and filled boxes, for documents that are drawn from tables of positions.
/// Lengths are in points from the top left corner, provided that the writer's resolution is 72. Needs a
/// QGuiApplication, but not its thread.
class PaperSheet {
public:
    explicit PaperSheet(QPdfWriter &paper) : m_paper(paper), m_painter(&paper) {}

    void fill(const QRectF &box, const QColor &color) { m_painter.fillRect(box, color); }
    void rule(double y, double from, double to);

    /// Draws `fields`, each on lines of its own, into `box`; empty ones take no line. What is too much for the box is
    /// drawn smaller, and what is too much even at the smallest size is cut at an ellipsis: a text never leaves its
    /// box.
    void draw(const QStringList &fields, const QRectF &box, const TextStyle &style);
    void draw(const QString &text, const QRectF &box, const TextStyle &style) { draw(QStringList{text}, box, style); }

private:
    using Paragraphs = QList<QStringList>; ///< the lines of each field

    Paragraphs wrapped(const QStringList &fields, const QFont &font, double width);
    void drawLines(const Paragraphs &paragraphs, const QRectF &box, Qt::AlignmentFlag align,
                   const QFontMetricsF &metrics, double ascent, double step);

    QPdfWriter &m_paper;
    QPainter m_painter;
};

/// `text` as one line that can be drawn, also where a document wants it elsewhere than on its sheet.
QString printable(QString text);

} // namespace parcelory
