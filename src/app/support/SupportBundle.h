#pragma once

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "app/label/LabelScreen.h"
#include "app/settings/KeysScreen.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "shell/Trace.h"

#include <QByteArray>
#include <QList>

#include <utility>

namespace parcelory {

/// One ZIP file for support: version, system, settings, errors, what the program did last, counts of the records and
/// the states of the print queues. Without names, addresses, numbers of parcels and secrets: see Redactor.
class SupportBundle : public Observable {
public:
    SupportBundle(AppState &app, LabelScreen &label, AddressBook &book, KeysScreen &keys, Trace &trace);

    Observed<bool> saving{this, false};

    /// Asks where, writes the file, and tells the clerk.
    Task<> save();

private:
    using Files = QList<std::pair<QString, QByteArray>>;
    struct Facts;
    Facts facts() const;
    static Files collect(AppState &app, Trace &trace, const Facts &facts);
    static QStringList namesInLog(const ShipmentLog &log);
    static QString errorsOf(const AppState &app, const Facts &facts);

    AppState &m_app;
    LabelScreen &m_label;
    AddressBook &m_book;
    KeysScreen &m_keys;
    Trace &m_trace;
};

} // namespace parcelory
