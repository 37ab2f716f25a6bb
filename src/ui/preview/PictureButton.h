#pragma once

#include "core/ports/Prompts.h"

#include <QAbstractButton>
#include <QPixmap>

namespace parcelory {

/// The pictures of a question, one at a time. Left and Right change the picture; a click, Space or Return enlarges it.
class PictureButton : public QAbstractButton {
    Q_OBJECT
public:
    /// `room` is in logical pixels; smaller pictures are enlarged to it, larger pictures are shrunk.
    PictureButton(const QList<QuestionPicture> &pictures, QSize room, QWidget *parent = nullptr);

    /// "The label, enlarged: (1 of 2)"; empty for a thumbnail.
    QString caption() const;
    QSize sizeHint() const override;

signals:
    void turned(); ///< to another picture

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void show(qsizetype at);

    QList<QuestionPicture> m_pictures;
    QList<QPixmap> m_drawn;
    qsizetype m_at = 0;
};

} // namespace parcelory
