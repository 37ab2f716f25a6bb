#pragma once

#include "ui/theme/Tokens.h"

#include <QFont>
#include <QProxyStyle>

namespace parcelory {

enum class FontRole { total, h1, h2, body, button, strong, caption, captionStrong, badge, tableBadge, mono };

/// The look of the program: Fusion with colours, fonts and marks of its own, in light or dark. It is the
/// application's style, so whatever draws finds it there.
class Theme : public QProxyStyle {
    Q_OBJECT
public:
    /// Makes a theme the application's style. Follows the system's text size as it is now.
    static void install(bool dark);
    static Theme &current();

    bool isDark() const { return m_dark; }
    /// Changes palette and every drawing of the running program.
    void setDark(bool dark);

    const Tokens &tokens() const { return m_dark ? darkTokens() : lightTokens(); }
    QColor color(Token token) const { return tokens().*token; }
    QFont font(FontRole role) const;
    /// A measure in logical pixels that grows with the system's text size.
    int scaled(int pixels) const { return qRound(pixels * m_textScale); }

    static constexpr int fieldHeight = 28, radius = 5, cardRadius = 6, dialogRadius = 10;

    /// The frame of a field: white with an edge, a ring when it has the focus, red when `fault`.
    void drawField(QPainter &painter, const QRect &rect, bool enabled, bool focus, bool fault) const;
    /// The ring around whatever has the focus.
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
