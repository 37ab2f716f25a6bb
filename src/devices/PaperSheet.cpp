#include "devices/PaperSheet.h"

#include "core/AppError.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QGlyphRun>
#include <QGuiApplication>
#include <QTextLayout>

#include <algorithm>
#include <functional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr double smallestSize = 6;
const QColor ruleGray = QColor::fromRgbF(0.75F, 0.75F, 0.75F);

/// True for texts that a font must put together from joining letters, from combining marks or from right to left, such
/// as Arabic, Thai and Hebrew.
bool needsShaping(const QString &text)
{
    return std::ranges::any_of(text.toUcs4(), [](char32_t c) {
        switch (QChar::script(c)) {
        case QChar::Script_Common:
        case QChar::Script_Latin:
        case QChar::Script_Greek:
        case QChar::Script_Cyrillic:
        case QChar::Script_Armenian:
        case QChar::Script_Georgian:
        case QChar::Script_Han:
        case QChar::Script_Hiragana:
        case QChar::Script_Katakana:
        case QChar::Script_Bopomofo:
        case QChar::Script_Hangul:
            return QChar::joiningType(c) != QChar::Joining_None;
        default:
            return true;
        }
    });
}

/// A font for print in which every letter has its own glyph, without shaping where the script allows it. A search of
/// the document would find wrong or missing text for shared glyphs, ligatures and contextual forms: Inter loses the
/// Greek iota and the hyphens and colons next to digits.
QFont printFont(double size, bool bold, bool shaped)
{
    // Every Mac has Arial, and its license allows it in documents; Liberation Sans has the same widths.
#ifdef Q_OS_MACOS
    QFont font({u"Arial"_s, u"Helvetica"_s});
#else
    // Without its own family here, a script may come out in any font that has its letters, such as a serif font.
    QFont font({u"Liberation Sans"_s, u"Noto Sans Thai"_s, u"Noto Sans Devanagari"_s, u"Noto Sans Arabic"_s,
                u"Noto Sans Hebrew"_s, u"WenQuanYi Micro Hei"_s, u"Sans Serif"_s});
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

/// Shortens the longest fields until `room` lines remain, so that every field keeps its beginning.
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

QByteArray letterPage(const QString &paper, const QString &title, const std::function<void(PaperSheet &)> &draw)
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        throw AppError(paper + u" cannot be drawn — this run of the program has no fonts."_s);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(72); // a unit is a point
    writer.setPageSize(QPageSize(QPageSize::Letter));
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    writer.setTitle(printable(title));
    writer.setCreator(u"Parcelory"_s);
    {
        PaperSheet sheet(writer); // the sheet's destructor completes the file
        draw(sheet);
    }
    return bytes;
}

QString printable(QString text)
{
    for (QChar &c : text) {
        // Control characters would print as boxes, and direction marks would mirror the text after them.
        const bool turns = (c >= u'\u202A' && c <= u'\u202E') || (c >= u'\u2066' && c <= u'\u2069');
        if (turns || c.category() == QChar::Other_Control)
            c = u' ';
    }
    return text.simplified().normalized(QString::NormalizationForm_C); // composed accents need no shaping
}

QString lettersWithoutGlyph(const QString &text)
{
    const QString all = printable(text);
    QString missing;
    for (const char32_t c : all.toUcs4()) {
        const QString letter = QString::fromUcs4(&c, 1);
        if (QChar::isSpace(c) || QChar::category(c) == QChar::Other_Format || missing.contains(letter))
            continue;
        QTextLayout layout(letter, printFont(10, false, needsShaping(letter)));
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        const QList<QGlyphRun> runs = layout.glyphRuns();
        // Every font draws its missing letters with glyph 0, a box.
        if (std::ranges::any_of(runs, [](const QGlyphRun &run) { return run.glyphIndexes().contains(0U); }))
            missing += letter;
    }
    return missing;
}

qsizetype PaperSheet::countLines(const QStringList &fields, double width, const TextStyle &style)
{
    const bool shaped = std::ranges::any_of(fields, needsShaping);
    return lineCount(wrapped(fields, printFont(style.size, style.bold, shaped), width));
}

void PaperSheet::rule(double y, double from, double to)
{
    m_painter.setPen(QPen(ruleGray, 0.5));
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
        // A small tolerance, so that a line fits into a box of exactly its height.
        const auto room = qsizetype((box.height() - metrics.height()) / step + 1.01);
        Paragraphs paragraphs = wrapped(fields, font, box.width());
        if (lineCount(paragraphs) > room && size > smallestSize)
            continue;
        cut(paragraphs, room, metrics, box.width());
        m_painter.setFont(font);
        m_painter.setPen(style.color);
        // A single line that had to shrink keeps the baseline of the texts beside it.
        const bool alone = lineCount(paragraphs) == 1;
        drawLines(paragraphs, box, style.align, metrics, (alone ? unshrunk : metrics).ascent(), step);
        return;
    }
}

/// Breaks the fields between words, or within a word that is longer than a line.
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
