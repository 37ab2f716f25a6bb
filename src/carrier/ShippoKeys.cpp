#include "carrier/ShippoKeys.h"

#include "core/SettingsKeys.h"

#include "core/ports/Preferences.h"
#include "core/ports/SecretStore.h"
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString legacyAccount = u"shippo.token"_s;

QString account(const QString &name)
{
    return u"shippo.token."_s + name;
}

} // namespace

ShippoKeys::ShippoKeys(SecretStore &secrets, Preferences &preferences) : m_secrets(secrets), m_preferences(preferences)
{
}

void ShippoKeys::set(const QString &token, const QString &name)
{
    m_secrets.set(token, account(name));
    QStringList all = names();
    if (!all.contains(name))
        write(m_preferences, settings::shippoKeyNames, all << name);
    if (activeName().isEmpty())
        makeActive(name);
}

bool ShippoKeys::store(const QString &token, const QString &name)
{
    const bool isNew = !names().contains(name);
    set(token, name);
    const bool kept = this->token(name) == token;
    if (!kept && isNew)
        remove(name);
    return kept;
}

void ShippoKeys::remove(const QString &name)
{
    const std::optional<QString> legacy = m_secrets.get(legacyAccount);
    if (legacy && legacy == token(name))
        m_secrets.set(QString(), legacyAccount); // otherwise the key comes back once no name is left
    m_secrets.set(QString(), account(name));     // an empty token counts as no token everywhere
    QStringList all = names();
    all.removeOne(name);
    write(m_preferences, settings::shippoKeyNames, all);
    if (activeName() == name)
        makeActive(all.value(0));
}

void ShippoKeys::makeActive(const QString &name)
{
    write(m_preferences, settings::shippoActiveKeyName, name);
}

QStringList ShippoKeys::names() const
{
    return read(m_preferences, settings::shippoKeyNames);
}

QString ShippoKeys::activeName() const
{
    return read(m_preferences, settings::shippoActiveKeyName);
}

std::optional<QString> ShippoKeys::token(const QString &name) const
{
    return m_secrets.get(account(name));
}

std::optional<QString> ShippoKeys::activeToken()
{
    migrateIfNeeded();
    const QString name = activeName();
    if (name.isEmpty())
        return std::nullopt;
    return token(name);
}

void ShippoKeys::migrateIfNeeded()
{
    if (!names().isEmpty())
        return;
    const QString legacy = m_secrets.get(legacyAccount).value_or(QString());
    if (legacy.isEmpty())
        return;
    const QString name = isTest(legacy) ? u"Test Mode"_s : u"Live Mode"_s;
    set(legacy, name);
    makeActive(name);
}

bool ShippoKeys::isTest(const QString &token)
{
    return token.startsWith(u"shippo_test"_s);
}

QString ShippoKeys::settingsText(const QString &active) const
{
    if (active.isEmpty())
        return u"No API key active. Add one below (Shippo dashboard → API → Developer keys)."_s;
    const QString name = u'“' + activeName();
    return isTest(active) ? name + u"” active — TEST key, labels are free and not valid postage."_s
                          : name + u"” active — LIVE key, labels cost real money."_s;
}

QString ShippoKeys::statusText(const QString &active) const
{
    if (active.isEmpty())
        return u"No Shippo API key — add one in Settings"_s;
    return isTest(active) ? u"Shippo TEST mode ("_s + activeName() + u") — labels are not real postage"_s
                          : u"Shippo LIVE ("_s + activeName() + u") — labels cost real money"_s;
}

} // namespace parcelory
