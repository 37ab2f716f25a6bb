#pragma once

#include <QButtonGroup>
#include <QString>
#include <QWidget>

namespace parcelory {

/// A few choices side by side; the chosen segment is raised. Arrow keys change the choice.
class SegmentedControl : public QWidget {
    Q_OBJECT
public:
    /// `name` is the group's name for screen readers.
    explicit SegmentedControl(const QString &name, QWidget *parent = nullptr);

    void add(int id, const QString &text, const QString &icon = {});
    /// Adds a disabled segment with a badge that says why.
    void addUnavailable(const QString &text, const QString &icon, const QString &badge);
    /// Shows a number of open things beside the text; 0 shows nothing.
    void setCount(int id, int count);
    void choose(int id);
    void chooseNone();
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
