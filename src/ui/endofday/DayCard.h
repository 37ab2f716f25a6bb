#pragma once

#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"

class QBoxLayout;
class QScrollArea;
class QVBoxLayout;

namespace parcelory {

class BusyBar;

/// A card of the End of Day window: title, count, and what is left to do. Screen readers find it as a group.
class DayCard : public PanelFrame {
    Q_OBJECT
public:
    DayCard(const QString &icon, const QString &title, QWidget *parent = nullptr);

protected:
    static constexpr int cardHeight = 198;

    QVBoxLayout *body() const { return m_body; }
    void setCount(const QString &text) { m_count->setText(text); }
    void setBusy(bool busy);
    /// A list that scrolls in the rest of the card; its rows go into the returned layout.
    QVBoxLayout *addList();

private:
    QVBoxLayout *m_body;
    TextLabel *m_count;
    BusyBar *m_bar;
};

/// A number in the size of its weight, with words beside it.
class CountLine : public QWidget {
public:
    /// `isMain`: the number that needs a hand.
    CountLine(const QString &what, bool isMain, QWidget *parent = nullptr);

    void set(qsizetype count, const QString &note);
    void setInk(Token ink) { m_what->setInk(ink); }
    /// Adds a widget at the right end.
    void append(QWidget *widget);

private:
    TextLabel *m_number, *m_what;
    ElidedLabel *m_note;
    QBoxLayout *m_row;
};

} // namespace parcelory
