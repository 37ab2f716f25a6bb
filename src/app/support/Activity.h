#pragma once

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MailingLogScreen.h"
#include "app/update/UpdateChecker.h"
#include "shell/Trace.h"

#include <QLatin1StringView>
#include <QObject>
#include <QProperty>

#include <vector>

namespace parcelory {

/// Notes in the trace what the screens do: which operations begin and end, with numbers and without any text of theirs.
class Activity : public QObject {
public:
    Activity(AppState &app, LabelScreen &label, AddressBook &book, MailingLogScreen &mailingLog,
             UpdateChecker &updates);

    Trace trace;

private:
    template <class T, class Note>
    void watch(QProperty<T> &field, Note note);
    void watchWork(QProperty<bool> &field, QLatin1StringView operation);
    void watchApp(AppState &app);
    void watchLabel(LabelScreen &label);

    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
