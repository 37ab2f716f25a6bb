#pragma once

#include <QProgressBar>

namespace parcelory {

/// A progress bar, six pixels high.
class ProgressBar : public QProgressBar {
public:
    /// `name` is the name for screen readers; `width` is in logical pixels, 0 takes the available width.
    ProgressBar(const QString &name, int width, QWidget *parent = nullptr);

    void setProgress(double progress); ///< 0 to 1

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace parcelory
