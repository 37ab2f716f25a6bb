#pragma once

#include "ui/parts/Surface.h"
#include "ui/parts/TextLabel.h"

class QVBoxLayout;

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

/// What stands where a list has nothing to show: a drawing and a sentence, at two fifths of the height.
class EmptyState : public QWidget {
public:
    EmptyState(const QString &icon, const QString &sentence, QWidget *parent = nullptr);

    void set(const QString &icon, const QString &sentence);
    /// Something below the sentence, such as a button or a checklist.
    void append(QWidget *widget, Qt::Alignment alignment = Qt::AlignHCenter);

private:
    IconView *m_icon;
    TextLabel *m_sentence;
    QVBoxLayout *m_column;
};

/// Two pixels that move while something is under way for longer than a second.
class BusyBar : public QWidget {
public:
    explicit BusyBar(QWidget *parent = nullptr);

    void setBusy(bool busy);

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    int m_timer = 0;
    int m_ticks = 0;
};

} // namespace parcelory
