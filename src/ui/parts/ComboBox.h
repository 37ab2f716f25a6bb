#pragma once

#include <QComboBox>
#include <QIcon>
#include <QList>
#include <QVariant>

namespace parcelory {

/// A combo box with the height of the program's fields.
class ComboBox : public QComboBox {
    Q_OBJECT
public:
    explicit ComboBox(const QString &name, QWidget *parent = nullptr);

    struct Item {
        QString title;
        QVariant id;
        QString icon = {};
    };
    /// Shows these items and chooses the item with this id; chooses no item if the id is not in the list. Leaves equal
    /// items alone, so that an open list is not disturbed.
    void offer(const QList<Item> &items, const QVariant &chosen);
    /// Sets what the closed list shows instead of its current row; an empty text shows the row again.
    void setFace(const QString &text, const QIcon &icon);
    QString shownText() const { return m_face.isEmpty() ? currentText() : m_face; }
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QString m_face;
    QIcon m_faceIcon;
};

} // namespace parcelory
