#pragma once

#include "ui/parts/LineEdit.h"

#include <QProperty>
#include <QPropertyNotifier>

#include <memory>

namespace parcelory {

/// Binds a field and a text of a screen model in both directions for the field's lifetime. Writes the field only when
/// the text differs, so that the cursor stays where the clerk put it.
template <class Get, class Set, class Property>
void bindText(LineEdit *field, Property &watched, Get get, Set set)
{
    const auto show = [field, get] {
        if (field->text() == get())
            return;
        field->setText(get());
        if (!field->hasFocus())
            field->setCursorPosition(0); // the beginning of a long text tells more than its end
    };
    show();
    auto notifier = std::make_shared<QPropertyNotifier>(watched.addNotifier(show));
    QObject::connect(field, &QLineEdit::textEdited, field, [set, notifier](const QString &typed) { set(typed); });
}

inline void bindText(LineEdit *field, QProperty<QString> &property)
{
    bindText(
        field, property, [&property] { return property.value(); },
        [&property](const QString &typed) { property = typed; });
}

/// The same for one member of a record that is held in a property.
template <class Record>
void bindText(LineEdit *field, QProperty<Record> &property, QString Record::*member)
{
    bindText(
        field, property, [&property, member] { return property.value().*member; },
        [&property, member](const QString &typed) {
            Record record = property;
            record.*member = typed;
            property = record;
        });
}

} // namespace parcelory
