#include "app/settings/RulesScreen.h"

#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Text.h"
#include "core/ports/Clock.h"
#include "core/ports/Desktop.h"
#include "core/ports/Preferences.h"
#include "shell/ErrorLog.h"

#include <QUrl>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

RulesScreen::RulesScreen(AppState &app) : m_app(app)
{
    buildOn(app.rules);
    keep(guardOn, settings::spendGuardOn);
    keep(guardAbove, settings::spendGuardAbove);
    keep(guardNamesCheaper, settings::spendGuardNamesCheaper);
    keep(guardWantsReference, settings::spendGuardWantsReference);
}

template <class T>
void RulesScreen::keep(Observed<T> &field, const Setting<T> &setting)
{
    field = read(m_app.platform.preferences, setting);
    m_notifiers.push_back(
        field.addNotifier([this, &field, &setting] { write(m_app.platform.preferences, setting, field); }));
}

QString RulesScreen::countText() const
{
    const QList<Rule> &all = rules().book.value().rules;
    const auto on = std::ranges::count_if(all, [this](const Rule &rule) { return rules().isOn(rule.id); });
    return u"%1 rules, %2 on"_s.arg(all.size()).arg(on);
}

QString RulesScreen::title() const
{
    return u"Rules of "_s + ruleDayText(rules().book.value().date);
}

QString RulesScreen::origin() const
{
    return rules().isBuiltIn ? u"Built into Parcelory. A newer us-shipping.json in the data folder is used instead."_s
                             : u"From the data folder."_s;
}

QString RulesScreen::ageText(const Rule &rule) const
{
    constexpr int fresh = 6, monthsOfYear = 12;
    const QDate today = m_app.platform.clock.now().date();
    int months = (today.year() - rule.checked.year()) * monthsOfYear + today.month() - rule.checked.month();
    if (rule.checked.addMonths(months) > today)
        --months;
    const bool isFresh = rule.checked.addMonths(fresh) >= today;
    return isFresh ? QString() : u"%1 months ago"_s.arg(months);
}

Task<> RulesScreen::openFolder()
{
    message = QString();
    try {
        co_await onPool([&desktop = m_app.platform.desktop, path = rules().folder()] {
            if (!QDir().mkpath(path))
                throw AppError(u"The folder %1 cannot be made."_s.arg(path));
            desktop.openFile(path);
        });
    } catch (const AppError &error) {
        message = m_app.recorded(u"Shipping Rules"_s, error, Popup::no);
    }
}

Task<> RulesScreen::openSource(QString address)
{
    message = QString();
    try {
        co_await onPool([&desktop = m_app.platform.desktop, address] { desktop.openUrl(QUrl(address)); });
    } catch (const AppError &error) {
        message = m_app.recorded(u"Shipping Rules"_s, error, Popup::no);
    }
}

} // namespace parcelory
