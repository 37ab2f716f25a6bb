#pragma once

#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// A small icon with a text beside it, in one color: a warning under a row, a marker, an outcome.
class Notice : public QWidget {
    Q_OBJECT
public:
    Notice(const QString &icon, Token ink, FontRole role = FontRole::captionStrong, QWidget *parent = nullptr);

    /// An empty text hides the notice.
    void setText(const QString &text);
    QString text() const { return m_text->text(); }
    /// Keeps the text on one line, however long it is.
    void setUnwrapped() { m_text->setWordWrap(false); }
    /// Without an icon, the text takes its place.
    void setLook(const QString &icon, Token ink);
    /// Gives the text a different color from the icon.
    void setTextInk(Token ink) { m_text->setInk(ink); }

private:
    IconView *m_icon;
    TextLabel *m_text;
};

} // namespace parcelory
