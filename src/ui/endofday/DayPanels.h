#pragma once

#include "app/endofday/EndOfDayScreen.h"

#include <QWidget>

class QStackedWidget;

namespace parcelory {

class Button;
class CellTable;
class EmptyState;
class TextLabel;

/// What the day cost by carrier and service, and the refunds that were asked for.
class SpendPanel : public QWidget {
public:
    explicit SpendPanel(EndOfDayScreen &screen, QWidget *parent = nullptr);

    /// Takes the width of its layout, instead of its own.
    void setFullWidth(bool isFull);
    void refresh();

private:
    EndOfDayScreen &m_screen;
    CellTable *m_spend, *m_refunds;
    QStackedWidget *m_pages; ///< the table, or that no label was bought
    EmptyState *m_none;
    QWidget *m_frame;
    TextLabel *m_refundTitle, *m_refundNote;
};

/// The labels that differ from the account, a row each, and what the chosen row means.
class DifferencePanel : public QWidget {
    Q_OBJECT
public:
    explicit DifferencePanel(EndOfDayScreen &screen, QWidget *parent = nullptr);

    void refresh();

signals:
    /// The clerk wants to see the label in its log.
    void opened(const AccountDifference &chosen);

private:
    void open();

    EndOfDayScreen &m_screen;
    CellTable *m_table;
    QStackedWidget *m_pages; ///< the table, or why it is empty
    TextLabel *m_count, *m_explanation;
    Button *m_show;
    EmptyState *m_same;
};

} // namespace parcelory
