#pragma once

// What the tests of the windows use most, beside what the tests of the screens use.

// IWYU pragma: begin_exports
#include "support/AppTest.h"
#include "support/OtherValues.h"
#include "support/WindowDesk.h"
#include "ui/log/MailingLogView.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/DateField.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RowTable.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
// IWYU pragma: end_exports

namespace parcelory::test {

/// The texts that a window shows outside its controls.
inline QStringList shownTexts(const QWidget &root)
{
    QStringList texts;
    for (const QLabel *label : root.findChildren<QLabel *>()) {
        if (label->isVisible())
            texts += label->text().remove(QChar(0x200B)); // zero-width spaces
    }
    return texts;
}

inline bool shows(const QWidget &root, const QString &text)
{
    return shownTexts(root).contains(text);
}

} // namespace parcelory::test
