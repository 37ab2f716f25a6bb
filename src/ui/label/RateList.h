#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Follower.h"

#include <QListView>
#include <QStandardItemModel>

namespace parcelory {

/// The rates as radio rows; arrow keys, a click or Space choose one.
class RateList : public QListView {
    Q_OBJECT
public:
    explicit RateList(LabelScreen &screen, QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void refill();
    void showChosen();

    LabelScreen &m_screen;
    QStandardItemModel m_rows;
    Follower m_rates;
    Follower m_chosen;
};

} // namespace parcelory
