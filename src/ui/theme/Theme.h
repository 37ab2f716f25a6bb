#pragma once

#include "ui/theme/Tokens.h"

#include <QFont>
#include <QProxyStyle>

namespace parcelory {

enum class FontRole { total, h1, h2, body, button, strong, caption, captionStrong, badge, tableBadge, mono };

/// The program's look: Fusion with its own colors, fonts and marks, in light or dark. It is the application's style, so
/// all drawing code can reach it.
class Theme : public QProxyStyle {
    Q_OBJECT
public:
    /// Installs a theme as the application's style, in the system's current text size.
    static void install(bool dark);
    static Theme &current();

    bool isDark() const { return m_dark; }
    /// Changes the palette and all drawing of the running program.
    void setDark(bool dark);

    const Tokens &tokens() const { return m_dark ? darkTokens() : lightTokens(); }
    QColor color(Token token) const { return tokens().*token; }
    QFont font(FontRole role) const;
    /// Scales a length in logical pixels with the system's text size.
    int scaled(int pixels) const { return qRound(pixels * m_textScale); }

    static constexpr int fieldHeight = 28, radius = 5, cardRadius = 6;

    /// The frame of a field: filled, with an edge; a ring if it has the focus, red if `fault`.
    void drawField(QPainter &painter, const QRect &rect, bool enabled, bool focus, bool fault) const;
    /// The ring around the focused item.
    void drawFocusRing(QPainter &painter, const QRectF &rect, qreal radius) const;

    QPalette standardPalette() const override;
    void polish(QWidget *widget) override;
    using QProxyStyle::polish;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *answer) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                         const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;

signals:
    void changed();

private:
    explicit Theme(bool dark);

    void drawCheckMark(QPainter &painter, const QRect &rect, const QStyleOption &option) const;
    void drawRadioMark(QPainter &painter, const QRect &rect, const QStyleOption &option) const;
    void drawTab(QPainter &painter, const QStyleOption *option) const;
    void drawTabText(QPainter &painter, const QStyleOption *option) const;
    void drawHeader(QPainter &painter, const QStyleOption *option) const;

    bool m_dark;
    double m_textScale = 1;
};

} // namespace parcelory
