#pragma once

#include "app/AppState.h"
#include "core/Observable.h"
#include "core/Setting.h"
#include "core/Task.h"

#include <vector>

namespace parcelory {

/// Settings ▸ Shipping Rules: the rules in use with their switches, and the spend guard. Every change is stored at
/// once.
class RulesScreen : public Observable {
public:
    explicit RulesScreen(AppState &app);

    Observed<QString> message{this}; ///< why the folder or a source could not be opened; otherwise empty

    // See SpendGuard.
    Observed<bool> guardOn{this, false};
    Observed<QString> guardAbove{this}; ///< as typed
    Observed<bool> guardNamesCheaper{this, true};
    Observed<bool> guardWantsReference{this, false};

    const ShippingRules &rules() const { return m_app.rules; }
    void setOn(const QString &id, bool on) { m_app.rules.setOn(id, on); }
    /// "24 rules, 23 on"
    QString countText() const;
    /// "Rules of 11/02/26"
    QString title() const;
    /// Where the rules come from.
    QString origin() const;
    /// "8 months ago"; empty for a rule that was checked in the last six months.
    QString ageText(const Rule &rule) const;

    /// Opens the folder for a newer file, and makes it if it is missing.
    Task<> openFolder();
    /// Opens the web page of a rule's source.
    Task<> openSource(QString address);

    static bool isAddress(const QString &source) { return source.startsWith(QStringLiteral("https://")); }

private:
    template <class T>
    void keep(Observed<T> &field, const Setting<T> &setting);

    AppState &m_app;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
