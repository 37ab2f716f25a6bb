#pragma once

#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"

#include <QProperty>
#include <QScrollArea>

class QHBoxLayout;
class QVBoxLayout;

namespace parcelory {

class PanelFrame;

/// One page of Settings: a title and what belongs to it in cards below, scrolling where it is longer than the window.
class SettingsPage : public QScrollArea {
public:
    explicit SettingsPage(const QString &title, QWidget *parent = nullptr);

protected:
    static constexpr int widestCard = 804;

    QHBoxLayout *head() const { return m_head; } ///< the title's line
    void append(QWidget *widget);
    PanelFrame *appendCard();
    PanelFrame *appendListCard();                ///< for rows that keep their own distance
    QVBoxLayout *column(PanelFrame *card) const; ///< inside a card
    void appendCaption(const QString &text);
    /// A switch for a setting, whoever else changes it.
    static QWidget *makeSwitch(const QString &text, QProperty<bool> &property);
    /// Scrolls to a widget that was made or shown just now.
    void reveal(QWidget *widget);

private:
    QHBoxLayout *m_head;
    QVBoxLayout *m_column;
};

} // namespace parcelory
