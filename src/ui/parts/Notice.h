#pragma once

#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// A small drawing and a text beside it, in one colour: a warning under a row, a marker, an outcome.
class Notice : public QWidget {
public:
    Notice(const QString &icon, Token ink, FontRole role = FontRole::captionStrong, QWidget *parent = nullptr);

    /// An empty text hides the whole.
    void setText(const QString &text);
    QString text() const { return m_text->text(); }
    /// On one line, however long.
    void setUnwrapped() { m_text->setWordWrap(false); }
    void setLook(const QString &icon, Token ink);
    /// The text's own colour, where it is not that of the drawing.
    void setTextInk(Token ink) { m_text->setInk(ink); }

private:
    IconView *m_icon;
    TextLabel *m_text;
};

} // namespace parcelory
