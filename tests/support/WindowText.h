#pragma once

#include "ui/parts/Button.h"
#include "ui/parts/TextLabel.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTabBar>

namespace parcelory::test {

/// Everything that a window shows, as text: one line for each widget and menu entry, sorted. A hidden part counts as
/// hidden, whatever is in it; pages that are not in front count with their contents.
class WindowText {
public:
    static QStringList of(const QMainWindow &window)
    {
        WindowText text;
        text.m_lines += QStringLiteral("title ") + window.windowTitle();
        for (const QAction *menu : window.menuBar()->actions()) {
            if (menu->text() != QStringLiteral("&Edit")) // follows the focus
                text.addMenu(menu->text(), *menu->menu());
        }
        text.addChildren(window, {});
        text.m_lines.sort();
        return text.m_lines;
    }

private:
    void addMenu(const QString &path, const QMenu &menu)
    {
        for (const QAction *action : menu.actions()) {
            if (action->isSeparator())
                continue;
            add(path + QStringLiteral(" ▸ ") + action->text(), action->isEnabled(), action->isChecked());
            if (action->menu() && action->text() != QStringLiteral("Sort By")) // filled when it opens
                addMenu(action->text(), *action->menu());
        }
    }
    void addChildren(const QWidget &parent, const QString &path)
    {
        for (const QObject *child : parent.children()) {
            const auto *widget = qobject_cast<const QWidget *>(child);
            if (widget && !qobject_cast<const QMenu *>(widget) && !qobject_cast<const QMenuBar *>(widget) &&
                !widget->testAttribute(Qt::WA_TransparentForMouseEvents) && // the shade behind a dialog
                (!widget->isWindow() || widget->isVisible()))
                addWidget(*widget, path);
        }
    }
    void addWidget(const QWidget &widget, const QString &above)
    {
        const QString kind = QString::fromLatin1(widget.metaObject()->className()).section(QLatin1Char(':'), -1);
        const QString path = (widget.isWindow() ? QString() : above) + QLatin1Char('/') + kind;
        // A widget in a page that was never shown is hidden, too, but not by itself.
        const bool isHidden =
            widget.testAttribute(Qt::WA_WState_Hidden) && widget.testAttribute(Qt::WA_WState_ExplicitShowHide);
        const bool isPage = qobject_cast<const QStackedWidget *>(widget.parentWidget());
        add(path + (isHidden ? QStringLiteral(" hidden ") : QStringLiteral(" ")) + widget.accessibleName(), true,
            false);
        if (isHidden && !isPage)
            return;
        const bool isWhole = addContents(widget, path);
        if (!isWhole)
            addChildren(widget, path);
    }
    /// False if the widget's children are to be listed.
    bool addContents(const QWidget &widget, const QString &path)
    {
        const QString text = path + QStringLiteral(": ");
        const bool on = widget.isEnabledTo(widget.window());
        if (const auto *elided = dynamic_cast<const ElidedLabel *>(&widget)) {
            add(text + elided->fullText(), on, false);
        } else if (const auto *label = qobject_cast<const QLabel *>(&widget)) {
            add(text + label->text() + label->palette().color(QPalette::WindowText).name(), on, false);
        } else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget)) {
            const auto *own = dynamic_cast<const Button *>(button);
            add(text + button->text() + QStringLiteral(" [") + button->toolTip() + QLatin1Char(']') +
                    QString::number(own ? int(own->kind()) : -1),
                on, button->isChecked());
            return button->children().isEmpty();
        } else if (const auto *field = qobject_cast<const QLineEdit *>(&widget)) {
            add(text + field->text() + QStringLiteral(" [") + field->toolTip() + QLatin1Char(']') +
                    (field->isReadOnly() ? QStringLiteral(" fixed") : QString()),
                on, false);
        } else if (const auto *list = qobject_cast<const QComboBox *>(&widget)) {
            QStringList items;
            for (int at = 0; at < list->count(); ++at)
                items += list->itemText(at);
            add(text + list->currentText() + QStringLiteral(" of ") + items.join(QLatin1Char('|')) +
                    list->accessibleDescription(),
                on, false);
        } else if (const auto *bar = qobject_cast<const QProgressBar *>(&widget)) {
            add(text + QString::number(bar->value()), on, false);
        } else if (const auto *tabs = qobject_cast<const QTabBar *>(&widget)) {
            add(text + tabs->tabText(tabs->currentIndex()), on, false);
        } else if (const auto *view = qobject_cast<const QAbstractItemView *>(&widget)) {
            addRows(text, *view);
        } else if (const auto *area = qobject_cast<const QScrollArea *>(&widget)) { // without its scroll bars
            addWidget(*area->widget(), path);
        } else {
            return false;
        }
        return true;
    }
    void addRows(const QString &text, const QAbstractItemView &view)
    {
        for (int row = 0; view.model() && row < view.model()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < view.model()->columnCount(); ++column)
                cells += view.model()->index(row, column).data(Qt::AccessibleTextRole).toString() +
                         view.model()->index(row, column).data().toString();
            add(text + QString::number(row) + QLatin1Char(' ') + cells.join(QLatin1Char('|')), true,
                view.selectionModel()->isSelected(view.model()->index(row, 0)));
        }
    }
    void add(const QString &text, bool enabled, bool checked)
    {
        m_lines +=
            text + (enabled ? QString() : QStringLiteral(" (off)")) + (checked ? QStringLiteral(" ✓") : QString());
    }

    QStringList m_lines;
};

} // namespace parcelory::test
