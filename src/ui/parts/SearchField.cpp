#include "ui/parts/SearchField.h"

#include "ui/parts/LineEdit.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAction>
#include <QKeyEvent>

namespace parcelory {
using namespace Qt::StringLiterals;

SearchField::SearchField(const QString &prompt, int width, QWidget *parent) : LineEdit(prompt, 0, parent)
{
    constexpr int leastWidth = 120; // logical pixels
    if (width > 0) {
        setMinimumWidth(Theme::current().scaled(leastWidth));
        setMaximumWidth(Theme::current().scaled(width));
    }
    setPlaceholderText(prompt);
    setTextMargins(2, 0, 2, 0); // the magnifying glass is in front of the text
    QAction *glass = addAction(themeIcon(u"ui_search"_s, &Tokens::muted), LeadingPosition);
    glass->setEnabled(false);
    QAction *clear = addAction(themeIcon(u"ui_close"_s, &Tokens::muted), TrailingPosition);
    clear->setText(u"Clear search"_s);
    clear->setToolTip(u"Clear search (%1)"_s.arg(QKeySequence(Qt::Key_Escape).toString(QKeySequence::NativeText)));
    clear->setVisible(false);
    connect(clear, &QAction::triggered, this, &SearchField::clearByUser);
    connect(this, &QLineEdit::textChanged, clear, [clear](const QString &text) { clear->setVisible(!text.isEmpty()); });
}

QSize SearchField::sizeHint() const
{
    const QSize usual = LineEdit::sizeHint();
    return maximumWidth() == QWIDGETSIZE_MAX ? usual : QSize(maximumWidth(), usual.height());
}

void SearchField::focusAll()
{
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
}

void SearchField::clearByUser()
{
    clear();
    emit textEdited(QString()); // as if the clerk had deleted the text
}

void SearchField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty())
        clearByUser();
    else if (event->key() == Qt::Key_Down)
        emit listRequested();
    else
        LineEdit::keyPressEvent(event);
}

} // namespace parcelory
