#pragma once

#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"

class QVBoxLayout;

namespace parcelory {

/// What stands where a list has nothing to show: a drawing and a sentence, at two fifths of the height.
class EmptyState : public QWidget {
public:
    EmptyState(const QString &icon, const QString &sentence, QWidget *parent = nullptr);

    void set(const QString &icon, const QString &sentence);
    /// Something below the sentence, such as a button or a checklist.
    void append(QWidget *widget, Qt::Alignment alignment = Qt::AlignHCenter);

private:
    IconView *m_icon;
    TextLabel *m_sentence;
    QVBoxLayout *m_column;
};

} // namespace parcelory
