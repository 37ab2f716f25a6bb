#pragma once

#include "ui/theme/Theme.h"

#include <QLabel>

namespace parcelory {

/// A text in one of the theme's font roles; its color follows the theme.
class TextLabel : public QLabel {
    Q_OBJECT
public:
    explicit TextLabel(const QString &text = {}, FontRole role = FontRole::body, Token ink = &Tokens::text,
                       QWidget *parent = nullptr);

    void setInk(Token ink);

private:
    void recolor();

    Token m_ink;
};

/// A tooltip that shows the text literally, even if it contains markup.
QString plainToolTip(const QString &text);

/// The text with line break opportunities inside long runs without spaces.
QString breakable(const QString &text);
/// The same for a line of `widest` logical pixels: runs that fit stay whole.
QString breakable(const QString &text, FontRole role, int widest);

/// A text that is elided if it does not fit; the tooltip then shows the whole text.
class ElidedLabel : public TextLabel {
public:
    using TextLabel::TextLabel;

    void setFullText(const QString &text);
    QString fullText() const { return m_full; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void elide();

    QString m_full;
};

} // namespace parcelory
