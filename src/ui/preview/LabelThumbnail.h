#pragma once

#include "app/preview/LabelPreview.h"
#include "ui/parts/RefreshScheduler.h"

#include <QAbstractButton>

namespace parcelory {

/// The label of a place as a small sheet of paper, upright, white also in dark mode. A click, Space or Return opens the
/// label's window.
class LabelThumbnail : public QAbstractButton {
    Q_OBJECT
public:
    explicit LabelThumbnail(LabelPreview &preview, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void refresh();
    QString caption() const;

    LabelPreview &m_preview;
    int m_timer = 0; ///< runs until drawing counts as slow
    bool m_isSlow = false;
    RefreshScheduler m_refresh;
};

} // namespace parcelory
