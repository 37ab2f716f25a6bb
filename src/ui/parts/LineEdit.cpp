#include "ui/parts/LineEdit.h"

#include "ui/parts/TextLabel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAction>

namespace parcelory {

LineEdit::LineEdit(const QString &name, int width, QWidget *parent) : QLineEdit(parent)
{
    const Theme &theme = Theme::current();
    setAccessibleName(name);
    setFixedHeight(theme.scaled(Theme::fieldHeight));
    setTextMargins(6, 0, 2, 0);
    if (width > 0)
        setFixedWidth(theme.scaled(width));
    connect(this, &QLineEdit::textEdited, this, [this] { setFault({}); });
}

void LineEdit::setFault(const QString &reason)
{
    const bool faulty = !reason.isEmpty();
    if (!faulty && !hasFault())
        return;
    if (faulty && !m_mark && width() > 60)
        m_mark = addAction(themeIcon(QStringLiteral("ui_error"), &Tokens::bad), QLineEdit::TrailingPosition);
    if (!faulty) {
        delete m_mark;
        m_mark = nullptr;
    }
    setProperty("fault", faulty);
    setToolTip(plainToolTip(reason));
    setAccessibleDescription(reason);
    update();
}

QSize LineEdit::minimumSizeHint() const
{
    return {40, height()};
}

} // namespace parcelory
