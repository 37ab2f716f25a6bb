#pragma once

#include "app/Screens.h"
#include "ui/endofday/DayCard.h"

namespace parcelory {

class Button;
class Notice;

/// The USPS labels of the day, and the way to their SCAN form.
class ScanFormCard : public DayCard {
public:
    /// `refuge` takes the focus from a button that is disabled or gone.
    ScanFormCard(Screens &screens, QWidget *refuge, QWidget *parent = nullptr);

    void refresh();
    Button *step() const { return m_step; }

private:
    void take();

    Screens &m_screens;
    EndOfDayScreen &m_screen;
    QWidget *m_refuge;
    CountLine *m_missing, *m_done, *m_exempt;
    Button *m_again, *m_step;
    ElidedLabel *m_failure;
    QWidget *m_failureRow;
};

/// The FedEx parcels that the driver takes.
class FedexCard : public DayCard {
public:
    explicit FedexCard(EndOfDayScreen &screen, QWidget *parent = nullptr);

    void refresh();

private:
    EndOfDayScreen &m_screen;
    CountLine *m_count;
    QVBoxLayout *m_list;
    QList<DayLabel> m_shown;
};

/// Labels that did not come out, and purchases of unknown outcome.
class OpenLabelsCard : public DayCard {
public:
    OpenLabelsCard(Screens &screens, QWidget *refuge, QWidget *parent = nullptr);

    void refresh();

private:
    struct Shown {
        QList<DayLabel> labels;
        QList<UnresolvedPurchase> purchases;
        bool operator==(const Shown &) const = default;
    };
    void fill();
    QWidget *rowOf(const QString &icon, Token ink, const QString &title, const QString &about, Button *button);

    Screens &m_screens;
    EndOfDayScreen &m_screen;
    QWidget *m_refuge;
    QVBoxLayout *m_list;
    TextLabel *m_nothing;
    Shown m_shown;
    QList<Button *> m_reprints, m_checks;
};

} // namespace parcelory
