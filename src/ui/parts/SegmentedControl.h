#pragma once

#include <QButtonGroup>
#include <QString>
#include <QWidget>

namespace parcelory {

/// A few choices side by side, of which one is raised. Arrow keys move the choice.
class SegmentedControl : public QWidget {
    Q_OBJECT
public:
    /// `name` is what a screen reader calls the group.
    explicit SegmentedControl(const QString &name, QWidget *parent = nullptr);

    void add(int id, const QString &text, const QString &icon = {});
    /// A choice that cannot be made, with the word that says so.
    void addUnavailable(const QString &text, const QString &icon, const QString &badge);
    void choose(int id);
    int chosen() const { return m_group.checkedId(); }

private:
    void shareFocus();

signals:
    void chosenByUser(int id);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_name;
    QButtonGroup m_group;
};

} // namespace parcelory
