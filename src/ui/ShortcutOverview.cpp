#include "ui/ShortcutOverview.h"
#include "core/ports/Clock.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/TextLabel.h"
#include "ui/parts/WindowSize.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QGridLayout>
#include <QMenuBar>
#include <QScrollArea>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int overviewWidth = 720;

struct Shortcut {
    QString keys, text;
};

struct Group {
    QString menu;
    QList<Shortcut> shortcuts;

    int lines() const { return int(shortcuts.size()) + 2; } ///< including its title and an empty line
};

/// A menu entry's text without its mnemonic markers.
QString plain(QString text)
{
    const QString ampersand(QChar::ObjectReplacementCharacter);
    return text.replace(u"&&"_s, ampersand).remove(u'&').replace(ampersand, u"&"_s);
}

QList<Group> groupsOf(const QMenuBar &bar)
{
    QList<Group> groups;
    for (const QAction *menu : bar.actions()) {
        Group group{plain(menu->text()), {}};
        for (const QAction *action : menu->menu()->actions()) {
            const QString keys = action->shortcut().toString(QKeySequence::NativeText);
            if (!keys.isEmpty())
                group.shortcuts.append({keys, plain(action->text())});
        }
        if (!group.shortcuts.isEmpty())
            groups.append(group);
    }
    return groups;
}

/// Keys that no menu entry has.
Group everywhere()
{
    const auto keys = [](QKeyCombination combination) {
        return QKeySequence(combination).toString(QKeySequence::NativeText);
    };
    return {u"Everywhere"_s,
            {{u"Esc"_s, u"Close a dialog or window, clear the search"_s},
             {keys(Qt::CTRL | Qt::Key_W), u"Close a window"_s},
             {u"↑ ↓"_s, u"Choose a rate, a row or an address"_s},
             {u"← →"_s, u"Choose the carrier"_s},
             {keys(Qt::ALT | Qt::Key_1) + u"…5"_s, u"Choose the goods in International Paperwork"_s}}};
}

QGridLayout *makeColumn()
{
    auto *column = new QGridLayout;
    column->setHorizontalSpacing(12);
    column->setVerticalSpacing(3);
    column->setColumnMinimumWidth(0, Theme::current().scaled(110));
    column->setColumnStretch(1, 1);
    return column;
}

void append(QGridLayout *column, const Group &group)
{
    int row = column->rowCount();
    column->setRowMinimumHeight(row, column->count() == 0 ? 0 : Theme::current().scaled(8));
    column->addWidget(new TextLabel(group.menu, FontRole::captionStrong, &Tokens::muted), ++row, 0, 1, 2);
    for (const Shortcut &shortcut : group.shortcuts) {
        auto *text = new TextLabel(shortcut.text);
        text->setWordWrap(true);
        column->addWidget(new TextLabel(shortcut.keys, FontRole::strong), ++row, 0, Qt::AlignTop);
        column->addWidget(text, row, 1);
    }
}

/// Makes the columns scroll if the dialog, with its title and button, would be taller than the screen.
QScrollArea *scrolling(QHBoxLayout *columns, const QWidget &window)
{
    constexpr int aroundIt = 150, besideIt = 98; // of the dialog's frame
    const Theme &theme = Theme::current();
    auto *area = new QScrollArea;
    auto *sheet = new QWidget;
    columns->setContentsMargins(0, 0, theme.scaled(16), 0); // a scroll bar covers no text
    sheet->setLayout(columns);
    area->setFrameShape(QFrame::NoFrame);
    area->setBackgroundRole(QPalette::Base);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    area->setAccessibleName(u"Keyboard shortcuts"_s);
    area->setWidget(sheet);
    const int room = roomFor(window).height() - theme.scaled(aroundIt);
    area->setFixedHeight(std::min(sheet->heightForWidth(theme.scaled(overviewWidth) - besideIt), room));
    return area;
}

} // namespace

Dialog *makeShortcutOverview(Clock &clock, const QMenuBar &bar, QWidget *parent)
{
    auto *dialog =
        new Dialog(clock, u"Keyboard Shortcuts"_s, u"parcelory_mark"_s, &Tokens::accent, overviewWidth, parent);
    const QList<Group> groups = groupsOf(bar) + QList{everywhere()};
    int lines = 0, taken = 0;
    for (const Group &group : groups)
        lines += group.lines();
    auto *columns = new QHBoxLayout;
    columns->setSpacing(28);
    QGridLayout *column = nullptr;
    for (const Group &group : groups) {
        if (!column || (columns->count() == 1 && taken + group.lines() / 2 >= lines / 2)) {
            column = makeColumn();
            columns->addLayout(column, 1);
        }
        append(column, group);
        taken += group.lines();
    }
    for (int i = 0; i < columns->count(); ++i)
        columns->setAlignment(columns->itemAt(i)->layout(), Qt::AlignTop);
    QScrollArea *area = scrolling(columns, *parent);
    dialog->body()->addWidget(area);
    dialog->addButton(u"OK"_s, QDialog::Accepted, Button::Kind::solid);
    area->setFocus(); // the arrow keys scroll, and Return presses OK
    return dialog;
}

} // namespace parcelory
