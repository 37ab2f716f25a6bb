#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/RefreshScheduler.h"

#include <QListView>
#include <QStandardItemModel>

namespace parcelory {

/// The rates as radio rows; arrow keys, a click or Space choose a rate.
class RateList : public QListView {
    Q_OBJECT
public:
    explicit RateList(LabelScreen &screen, QWidget *parent = nullptr);

    QSize minimumSizeHint() const override; ///< of one rate

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void refresh();
    void refill();
    void showChosen();

    LabelScreen &m_screen;
    QStandardItemModel m_rows;
    QList<ShippoRate> m_listed;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
