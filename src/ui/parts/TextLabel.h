#pragma once

#include "ui/theme/Theme.h"

#include <QLabel>

namespace parcelory {

/// A text in one of the program's roles; its colour follows the theme.
class TextLabel : public QLabel {
public:
    explicit TextLabel(const QString &text = {}, FontRole role = FontRole::body, Token ink = &Tokens::text,
                       QWidget *parent = nullptr);

    void setInk(Token ink);

private:
    void recolour();

    Token m_ink;
};

/// A tooltip that shows the text as it is, whatever markup it may hold.
QString plainToolTip(const QString &text);

/// The text with places to break in runs that no line holds.
QString breakable(const QString &text);
/// The same for a narrow place of `widest` logical pixels: what fits there stays whole.
QString breakable(const QString &text, FontRole role, int widest);

/// A text that is cut with an ellipsis where it does not fit; the whole stands in the tooltip.
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
