#pragma once

#include "ui/parts/PanelFrame.h"
#include "ui/parts/TextLabel.h"

#include <QPointer>
#include <QProperty>
#include <QScrollArea>

class QHBoxLayout;
class QVBoxLayout;

namespace parcelory {

class PanelFrame;

/// One page of Settings: a title with cards below it. Scrolls if it is taller than the window.
class SettingsPage : public QScrollArea {
public:
    explicit SettingsPage(const QString &title, QWidget *parent = nullptr);

protected:
    static constexpr int widestCard = 804;

    QHBoxLayout *head() const { return m_head; } ///< the title's line
    void append(QWidget *widget);
    PanelFrame *appendCard();
    PanelFrame *appendListCard();                ///< for rows with their own margins
    QVBoxLayout *column(PanelFrame *card) const; ///< a card's layout
    void appendCaption(const QString &text);
    /// A check box for a setting; it follows changes made elsewhere.
    static QWidget *makeSwitch(const QString &text, QProperty<bool> &property);
    /// Disables a button while its operation runs. The page keeps its focus meanwhile; otherwise the next control would
    /// take it, and the same key pressed again would use that control.
    void setBusy(QWidget *button, bool busy);
    /// Scrolls to a widget that was just created or shown.
    void reveal(QWidget *widget);

private:
    QHBoxLayout *m_head;
    QVBoxLayout *m_column;
    QPointer<QWidget> m_waiting; ///< gets the focus back
};

} // namespace parcelory
