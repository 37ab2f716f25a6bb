#include "ui/parts/TextLabel.h"

#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <utility>

namespace parcelory {

namespace {

/// Breaks runs without spaces that are wider than `widest`.
template <class WidthOf>
QString breakRuns(const QString &text, int widest, WidthOf widthOf)
{
    QString result;
    int run = 0;
    for (const QChar character : text) {
        const int width = widthOf(character);
        run = character.isSpace() ? 0 : run + width;
        if (run > widest && !character.isLowSurrogate()) {
            result += QChar(0x200B); // zero-width space
            run = width;
        }
        result += character;
    }
    return result;
}

} // namespace

QString plainToolTip(const QString &text)
{
    const QString escaped = text.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>"));
    return text.isEmpty() ? QString() : QStringLiteral("<p>") + escaped + QStringLiteral("</p>");
}

QString breakable(const QString &text)
{
    constexpr int longestRun = 40; // characters
    return breakRuns(text, longestRun, [](QChar) { return 1; });
}

QString breakable(const QString &text, FontRole role, int widest)
{
    const QFontMetrics metrics(Theme::current().font(role));
    return breakRuns(text, Theme::current().scaled(widest),
                     [&metrics](QChar character) { return metrics.horizontalAdvance(character); });
}

TextLabel::TextLabel(const QString &text, FontRole role, Token ink, QWidget *parent) : QLabel(text, parent), m_ink(ink)
{
    setTextFormat(Qt::PlainText); // names and carrier responses are not markup
    setFont(Theme::current().font(role));
    setForegroundRole(QPalette::WindowText); // on a sheet it would inherit the fields' role
    connect(&Theme::current(), &Theme::changed, this, &TextLabel::recolor);
    recolor();
}

void TextLabel::setInk(Token ink)
{
    if (std::exchange(m_ink, ink) != ink)
        recolor();
}

void TextLabel::recolor()
{
    QPalette colors = palette();
    colors.setColor(QPalette::Active, QPalette::WindowText, Theme::current().color(m_ink));
    colors.setColor(QPalette::Inactive, QPalette::WindowText, Theme::current().color(m_ink));
    setPalette(colors);
}

void ElidedLabel::setFullText(const QString &text)
{
    if (text == m_full)
        return;
    m_full = text;
    setAccessibleName(text);
    updateGeometry();
    elide();
}

QSize ElidedLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(m_full) + 2, QLabel::sizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::elide()
{
    const QString shown = fontMetrics().elidedText(m_full, Qt::ElideRight, width());
    setText(shown);
    setToolTip(shown == m_full ? QString() : plainToolTip(m_full));
}

} // namespace parcelory
