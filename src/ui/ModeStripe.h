#pragma once

#include "app/settings/KeysScreen.h"

#include <QWidget>

namespace parcelory {

/// A striped band at the top of the window: the labels are not real postage.
class ModeStripe : public QWidget {
public:
    explicit ModeStripe(QWidget *parent = nullptr);

    void setMode(PostageMode mode); ///< shown for test and practice only

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    PostageMode m_mode = PostageMode::none;
};

} // namespace parcelory
