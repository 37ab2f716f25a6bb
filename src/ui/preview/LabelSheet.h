#pragma once

#include "devices/LabelPicture.h"

#include <QAbstractScrollArea>

#include <memory>
#include <optional>

namespace parcelory {

/// A label's pages, one at a time, as large as the clerk likes: fitted to the room, or enlarged and scrolled with the
/// arrow keys or the mouse.
class LabelSheet : public QAbstractScrollArea {
    Q_OBJECT
public:
    /// In percent; at 100, a printed dot is a pixel of the screen.
    static constexpr int least = 25, most = 400, step = 25;

    explicit LabelSheet(QWidget *parent = nullptr);

    /// A label of another kind begins with its first page.
    void setPicture(const std::shared_ptr<const LabelPicture> &picture);
    void setTurned(bool isTurned);
    /// Nothing fits the page to the room.
    void setZoom(std::optional<int> percent);
    /// One step up or down from the size that is shown.
    void zoomBy(int steps);
    bool isFitted() const { return !m_zoom; }
    int percent() const; ///< as shown
    /// Frames a place of the label and scrolls to it; an empty place frames nothing.
    void mark(const LabelPlace &place);
    void turnPage(int pages);

signals:
    void zoomed();
    void closeRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    const QImage *image() const;
    double scale() const; ///< logical pixels for each dot
    QRectF paper() const; ///< in the viewport
    QRectF placed(const QRect &dots) const;
    void arrange();

    std::shared_ptr<const LabelPicture> m_picture;
    qsizetype m_page = 0;
    bool m_isTurned = false;
    std::optional<int> m_zoom;
    LabelPlace m_mark;
    QImage m_scaled; ///< the page in the size that is shown, upright
    QPoint m_dragged;
};

} // namespace parcelory
