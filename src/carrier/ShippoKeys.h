#pragma once

#include "core/ports/Preferences.h"
#include "core/ports/SecretStore.h"

#include <QStringList>

#include <optional>

namespace parcelory {

/// The named API keys: tokens in the secret store, names and the choice of the active one in the preferences.
/// Nothing is cached, so a change applies to the very next request.
class ShippoKeys {
public:
    ShippoKeys(SecretStore &secrets, Preferences &preferences);

    /// Stores or replaces a key. The first key becomes active automatically.
    void set(const QString &token, const QString &name);
    /// The same, but checks that the secret store kept the token: if not, returns false and removes a new key again.
    [[nodiscard]] bool store(const QString &token, const QString &name);
    static constexpr qsizetype longestName = 40; ///< characters; the status strip shows it whole
    static inline const QString tooLong = QStringLiteral("The name of a key has at most 40 characters.");
    static inline const QString notKept =
        QStringLiteral("The system's secret store did not keep the key — is it unlocked?");
    /// Removes a key; if it was active, the first remaining key becomes active.
    void remove(const QString &name);
    void makeActive(const QString &name);

    QStringList names() const;  ///< in the order in which they were added
    QString activeName() const; ///< empty if no key is active
    std::optional<QString> token(const QString &name) const;
    /// The active key's token; nothing or empty if there is no active key. May block: see SecretStore.
    std::optional<QString> activeToken();

    /// Gives the single key of earlier versions a name.
    void migrateIfNeeded();

    /// Tokens that begin with "shippo_test" buy labels without value; every other token costs real money.
    static bool isTest(const QString &token);

    /// The line above the list of keys in Settings. Takes the active token, empty if no key is active, because each
    /// read of the secret store may ask the user.
    QString settingsText(const QString &activeToken) const;
    /// The line of the status strip, likewise.
    QString statusText(const QString &activeToken) const;

private:
    SecretStore &m_secrets;
    Preferences &m_preferences;
};

} // namespace parcelory
