#pragma once

#include "ui/parts/IconView.h"
#include "ui/parts/TextLabel.h"

class QVBoxLayout;

namespace parcelory {

/// Shown in place of an empty list: an icon and a sentence, at two fifths of the height.
class EmptyState : public QWidget {
public:
    EmptyState(const QString &icon, const QString &sentence, QWidget *parent = nullptr);

    void set(const QString &icon, const QString &sentence);
    /// Adds a widget below the sentence, such as a button or a checklist.
    void append(QWidget *widget, Qt::Alignment alignment = Qt::AlignHCenter);

private:
    IconView *m_icon;
    TextLabel *m_sentence;
    QVBoxLayout *m_column;
};

} // namespace parcelory
