#include "platform/Keychain.h"

#include "core/ports/SecretStore.h"

// GLib has a struct member with the name of Qt's "signals" macro.
#undef signals
#include <libsecret/secret.h>

#include <QUtf8StringView>

#include <mutex>
#include <optional>

namespace parcelory {

namespace {

std::mutex oneAtATime; // libsecret's file backend is not thread-safe

const SecretSchema &schema()
{
    static const SecretSchema value = {SecretStore::service,
                                       SECRET_SCHEMA_NONE,
                                       {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                       0,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr};
    return value;
}

} // namespace

std::optional<QString> Keychain::get(const QString &account)
{
    const std::lock_guard lock(oneAtATime);
    GError *error = nullptr;
    SecretValue *found = secret_password_lookup_binary_sync(&schema(), nullptr, &error, "service", service, "account",
                                                            account.toUtf8().constData(), nullptr);
    if (error) {
        qWarning("Parcelory: the secret store cannot be read: %s", error->message);
        g_error_free(error);
        return std::nullopt;
    }
    if (!found)
        return std::nullopt;
    gsize size = 0;
    const char *bytes = secret_value_get(found, &size);
    const QUtf8StringView text(bytes, qsizetype(size));
    const std::optional<QString> result = text.isValidUtf8() ? std::optional(text.toString()) : std::nullopt;
    secret_value_unref(found);
    return result;
}

void Keychain::set(const QString &value, const QString &account)
{
    const std::lock_guard lock(oneAtATime);
    const QByteArray utf8 = value.toUtf8(), name = account.toUtf8();
    SecretValue *secret = secret_value_new(utf8.constData(), utf8.size(), "text/plain");
    GError *error = nullptr;
    secret_password_store_binary_sync(&schema(), SECRET_COLLECTION_DEFAULT, ("Parcelory " + name).constData(), secret,
                                      nullptr, &error, "service", service, "account", name.constData(), nullptr);
    if (error) {
        qWarning("Parcelory: the secret store cannot be written: %s", error->message);
        g_error_free(error);
    }
    secret_value_unref(secret);
}

} // namespace parcelory
