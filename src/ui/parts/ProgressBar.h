#pragma once

#include <QProgressBar>

namespace parcelory {

/// How much of something long is done: six pixels high.
class ProgressBar : public QProgressBar {
public:
    /// `name` is what a screen reader calls it; `width` in logical pixels, 0 takes what there is.
    ProgressBar(const QString &name, int width, QWidget *parent = nullptr);

    void setShare(double share); ///< 0 to 1

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace parcelory
