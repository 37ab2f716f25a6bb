#include "carrier/ShippoError.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/Text.h"
#include "core/ports/HttpTransport.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype shownBodyLength = 300;
constexpr qsizetype shownLines = 4;
constexpr qsizetype longestRefusal = 1 << 20; // bytes; a refusal takes a few hundred

/// Adds texts until there are enough lines to show.
void flatten(const Json &value, const QString &path, QStringList &lines)
{
    if (lines.size() == shownLines)
        return;
    if (value.is_string()) {
        const QString text = QString::fromStdString(value.get<std::string>());
        if (text.trimmed().isEmpty())
            return; // a refusal without a reason
        lines += path.isEmpty() ? text : path + u": "_s + text;
    } else if (value.is_array()) {
        for (const Json &element : value)
            flatten(element, path, lines);
    } else if (value.is_object()) {
        std::map<std::string, const Json *> entries;
        for (const auto &[key, element] : value.items())
            entries.emplace(key, &element);
        for (const auto &[key, element] : entries) {
            const QString name = QString::fromStdString(key);
            flatten(*element, path.isEmpty() ? name : path + u' ' + name, lines);
        }
    }
}

} // namespace

ShippoError::ShippoError(Kind kind, int status, QString description)
    : AppError(std::move(description)), m_kind(kind), m_status(status)
{
}

ShippoError ShippoError::http(int status, const QString &body)
{
    return {Kind::http, status,
            u"Shippo HTTP "_s + QString::number(status) + u": "_s + firstCharacters(body, shownBodyLength)};
}

ShippoError ShippoError::api(const QString &message)
{
    return {Kind::api, 0, message};
}

ShippoError ShippoError::validation(const QString &message, int status, std::optional<std::chrono::seconds> wait)
{
    ShippoError error(Kind::validation, status, message);
    error.m_wait = wait;
    return error;
}

ShippoError ShippoError::noToken()
{
    return {Kind::noToken, 0, u"No Shippo API token set. Add one in Settings."_s};
}

QString withAdvice(const AppError &error, const QString &activeKeyName)
{
    const auto *shippo = dynamic_cast<const ShippoError *>(&error);
    if (shippo && shippo->isKeyRefusal())
        return error.description() +
               u"\nShippo refuses the active key “%1” — check it in Settings."_s.arg(activeKeyName);
    if (shippo && shippo->isRateLimit())
        return error.description() + u"\nShippo is busy — try again in %1."_s.arg(
                                         shippo->wait() ? u"%1 s"_s.arg(shippo->wait()->count()) : u"a minute"_s);
    return error.description();
}

RequestFate fateOf(const AppError &error)
{
    constexpr int timedOut = 408, conflict = 409; // refusals that leave the outcome open
    if (dynamic_cast<const NotSent *>(&error))
        return RequestFate::notSent;
    const auto *shippo = dynamic_cast<const ShippoError *>(&error);
    if (!shippo) // no response, or one that cannot be read
        return RequestFate::unknown;
    switch (shippo->kind()) {
    case ShippoError::Kind::noToken:
        return RequestFate::notSent;
    case ShippoError::Kind::api:
        return RequestFate::refused;
    case ShippoError::Kind::validation:
        return shippo->status() == timedOut || shippo->status() == conflict ? RequestFate::unknown
                                                                            : RequestFate::refused;
    case ShippoError::Kind::http:
        break;
    }
    return RequestFate::unknown;
}

std::optional<QString> prettyFieldErrors(const QByteArray &body)
{
    const std::optional<Json> json = body.size() > longestRefusal ? std::nullopt : parseJsonIfPossible(body);
    if (!json)
        return std::nullopt;
    QStringList lines;
    flatten(*json, QString(), lines);
    if (lines.isEmpty())
        return std::nullopt;
    return lines.join(u'\n');
}

} // namespace parcelory
