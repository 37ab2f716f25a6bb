#pragma once

#include <QColor>
#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QRectF>
#include <QStringList>

#include <functional>

namespace parcelory {

/// How a text of a printed document looks. Sizes are in points.
struct TextStyle {
    double size = 10;
    QColor color = Qt::black;
    bool bold = false;
    Qt::AlignmentFlag align = Qt::AlignLeft;
    double step = 0; ///< line spacing; 0 uses the font's spacing
};

/// A PDF page on which texts, rules and filled boxes are drawn at given positions. Lengths are in points from the top
/// left corner, provided that the writer's resolution is 72. Needs a QGuiApplication, but works on any thread.
class PaperSheet {
public:
    explicit PaperSheet(QPdfWriter &paper) : m_paper(paper), m_painter(&paper) {}

    void fill(const QRectF &box, const QColor &color) { m_painter.fillRect(box, color); }
    void rule(double y, double from, double to);

    /// Draws `fields` into `box`, each starting on a new line; empty fields take no line. Text that does not fit is
    /// drawn smaller; text that does not fit at the smallest size is cut with an ellipsis: a text never leaves its box.
    void draw(const QStringList &fields, const QRectF &box, const TextStyle &style);
    void draw(const QString &text, const QRectF &box, const TextStyle &style) { draw(QStringList{text}, box, style); }

    /// The lines that `fields` take in a column of `width`, unless their box makes them shrink.
    qsizetype countLines(const QStringList &fields, double width, const TextStyle &style);

private:
    using Paragraphs = QList<QStringList>; ///< the lines of each field

    Paragraphs wrapped(const QStringList &fields, const QFont &font, double width);
    void drawLines(const Paragraphs &paragraphs, const QRectF &box, Qt::AlignmentFlag align,
                   const QFontMetricsF &metrics, double ascent, double step);

    QPdfWriter &m_paper;
    QPainter m_painter;
};

/// A US Letter page as a PDF with embedded fonts; `draw` draws on it. Throws AppError, which names the `paper`, in a
/// program without a QGuiApplication, which the fonts need.
QByteArray letterPage(const QString &paper, const QString &title, const std::function<void(PaperSheet &)> &draw);

/// `text` as one printable line, also for texts outside the page, such as a document's title.
QString printable(QString text);

/// The letters of `text` that no installed font has, once each; a page shows a box in their place. Needs a
/// QGuiApplication.
QString lettersWithoutGlyph(const QString &text);

} // namespace parcelory
