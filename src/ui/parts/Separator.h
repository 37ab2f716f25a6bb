#pragma once

#include <QWidget>

namespace parcelory {

/// A hairline between sections.
class Separator : public QWidget {
public:
    explicit Separator(Qt::Orientation orientation = Qt::Horizontal, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace parcelory
