#pragma once

#include <QComboBox>
#include <QIcon>

namespace parcelory {

/// A combo box with the height of the program's fields.
class ComboBox : public QComboBox {
public:
    explicit ComboBox(const QString &name, QWidget *parent = nullptr);

    /// Sets what the closed list shows instead of its current row; an empty text shows the row again.
    void setFace(const QString &text, const QIcon &icon);
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QString m_face;
    QIcon m_faceIcon;
};

} // namespace parcelory
