#pragma once

#include "compose/rules/RuleBook.h"
#include "core/Observable.h"
#include "core/Platform.h"
#include "core/Task.h"

namespace parcelory {

/// A day as the rules show it: "11/02/26".
QString ruleDayText(const QDate &day);

/// The shipping rules in use: those of this build, or of a newer rules/us-shipping.json in the data folder. The clerk
/// switches single rules off.
class ShippingRules : public Observable {
public:
    explicit ShippingRules(Platform &platform);

    Observed<RuleBook> book{this};
    Observed<bool> isBuiltIn{this, true};
    Observed<QString> refusal{this}; ///< why the data folder's file is not used; empty if it is used or missing
    Observed<QStringList> off{this}; ///< ids of the rules that are switched off; assigning stores them

    /// Reads the data folder's file. At the start.
    Task<> load();
    bool isOn(const QString &id) const { return !off.value().contains(id); }
    void setOn(const QString &id, bool on);
    QList<Rule> advise(const RuleParcel &parcel) const { return book.value().advise(parcel, off); }
    /// The folder for a newer file; may not exist.
    QString folder() const { return m_platform.dataFolder.filePath(QStringLiteral("rules")); }

private:
    Platform &m_platform;
    QPropertyNotifier m_offWatch;
};

} // namespace parcelory
