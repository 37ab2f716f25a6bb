#pragma once

#include "compose/LabelReadBack.h"

#include <QListWidget>

#include <optional>

namespace parcelory {

/// What was read from a label, item by item, and whether the parcel has the same.
class FindingList : public QListWidget {
    Q_OBJECT
public:
    explicit FindingList(QWidget *parent = nullptr);

    /// Chooses nothing if the findings are others.
    void setFindings(const QList<LabelFinding> &findings);
    std::optional<LabelFinding> chosen() const;

signals:
    void findingChosen();
    void closeRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QList<LabelFinding> m_findings;
};

} // namespace parcelory
