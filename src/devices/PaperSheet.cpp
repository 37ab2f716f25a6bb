#include "devices/PaperSheet.h"

#include <QFontDatabase>
#include <QTextLayout>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr double smallestSize = 6;
const QColor ruleGrey = QColor::fromRgbF(0.75F, 0.75F, 0.75F);

/// Letters that join or carry marks of their own: Arabic and its like.
bool needsShaping(const QString &text)
{
    return std::ranges::any_of(text, [](QChar c) { return c.joiningType() != QChar::Joining_None; });
}

/// A face for print in which every letter has a shape of its own, and no shaping where the script allows it. Shapes
/// that several letters share, ligatures and signs that a font swaps by context would come back as another text, or as
/// none, when the document is searched: Inter loses the Greek iota and the hyphens and colons beside digits.
QFont printFont(double size, bool bold, bool shaped)
{
#ifdef Q_OS_MACOS
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
#else
    QFont font({u"Liberation Sans"_s, u"Sans Serif"_s});
#endif
    font.setPointSizeF(size);
    font.setBold(bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    if (!shaped)
        font.setStyleStrategy(QFont::PreferNoShaping);
    return font;
}

qsizetype lineCount(const QList<QStringList> &paragraphs)
{
    qsizetype count = 0;
    for (const QStringList &lines : paragraphs)
        count += lines.size();
    return count;
}

/// Shortens the longest fields until `room` lines are left, so that every field keeps its beginning.
void cut(QList<QStringList> &paragraphs, qsizetype room, const QFontMetricsF &metrics, double width)
{
    while (lineCount(paragraphs) > std::max<qsizetype>(room, 1)) {
        QStringList &longest = *std::ranges::max_element(paragraphs, {}, &QStringList::size);
        if (longest.size() == 1) {
            paragraphs.removeLast();
            continue;
        }
        const QString rest = longest.takeLast();
        longest.last() = metrics.elidedText(longest.last() + rest, Qt::ElideRight, width);
    }
}

} // namespace

QString printable(QString text)
{
    for (QChar &c : text) {
        // Control characters would be boxes, and marks that turn the writing direction mirror what follows them.
        const bool turns = (c >= u'\u202A' && c <= u'\u202E') || (c >= u'\u2066' && c <= u'\u2069');
        if (turns || c.category() == QChar::Other_Control)
            c = u' ';
    }
    return text.simplified().normalized(QString::NormalizationForm_C); // accents need no shaping then
}

void PaperSheet::rule(double y, double from, double to)
{
    m_painter.setPen(QPen(ruleGrey, 0.5));
    m_painter.drawLine(QPointF(from, y), QPointF(to, y));
}

void PaperSheet::draw(const QStringList &fields, const QRectF &box, const TextStyle &style)
{
    const bool shaped = std::ranges::any_of(fields, needsShaping);
    const QFontMetricsF unshrunk(printFont(style.size, style.bold, shaped), &m_paper);
    for (double size = style.size;; size = std::max(size * 0.95, smallestSize)) {
        const QFont font = printFont(size, style.bold, shaped);
        const QFontMetricsF metrics(font, &m_paper);
        const double step = style.step > 0 ? style.step * size / style.size : metrics.lineSpacing();
        // A hair of tolerance, so that a box of exactly one line holds it.
        const auto room = qsizetype((box.height() - metrics.height()) / step + 1.01);
        Paragraphs paragraphs = wrapped(fields, font, box.width());
        if (lineCount(paragraphs) > room && size > smallestSize)
            continue;
        cut(paragraphs, room, metrics, box.width());
        m_painter.setFont(font);
        m_painter.setPen(style.color);
        // A line that had to shrink stays on the baseline of what stands beside it.
        const bool alone = lineCount(paragraphs) == 1;
        drawLines(paragraphs, box, style.align, metrics, (alone ? unshrunk : metrics).ascent(), step);
        return;
    }
}

/// Breaks the fields between words, or within one that is longer than a line.
PaperSheet::Paragraphs PaperSheet::wrapped(const QStringList &fields, const QFont &font, double width)
{
    Paragraphs paragraphs;
    for (const QString &field : fields) {
        const QString text = printable(field);
        if (text.isEmpty())
            continue;
        QTextLayout layout(text, font, &m_paper);
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        QStringList lines;
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            lines += text.mid(line.textStart(), line.textLength());
        }
        layout.endLayout();
        paragraphs += lines;
    }
    return paragraphs;
}

void PaperSheet::drawLines(const Paragraphs &paragraphs, const QRectF &box, Qt::AlignmentFlag align,
                           const QFontMetricsF &metrics, double ascent, double step)
{
    double baseline = box.top() + ascent;
    for (const QStringList &lines : paragraphs) {
        for (const QString &line : lines) {
            const QString text = line.trimmed();
            const double spare = align == Qt::AlignRight ? box.width() - metrics.horizontalAdvance(text) : 0;
            m_painter.drawText(QPointF(box.left() + spare, baseline), text);
            baseline += step;
        }
    }
}

} // namespace parcelory
