#pragma once

#include <nlohmann/json_fwd.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <string>

namespace parcelory {

using Json = nlohmann::ordered_json;

/// What goes back to the client for one request.
struct CarrierAnswer {
    int status = 200;
    QByteArray body = {};
    QByteArray contentType = "application/json";
    QByteArray rateLimitReset = {}; ///< Unix time at which requests are welcome again; empty leaves the header out
    bool brokenOff = false;         ///< the connection ends after half of the body
};

CarrierAnswer jsonAnswer(int status, const Json &body);
/// A refusal as the service words it for everything but fields: {"detail": "…"}.
CarrierAnswer detailAnswer(int status, const std::string &text);
/// The answer to a path or tracking number that nobody knows: a page, not JSON.
CarrierAnswer notFoundPage(const QByteArray &path);
/// The answer to an id that nobody knows.
CarrierAnswer notFound();

inline constexpr const char *objectOwner = "desk@example.com";

/// 32 hexadecimal digits.
std::string newObjectId();
/// What every record of the service begins with: its id, owner and times, and whether a test key made it.
Json newObject(bool test);
/// UTC with milliseconds: 2022-01-10T17:24:13.283Z.
std::string timestamp(const QDateTime &time);
std::string timestampNow();

/// The text under `key`; empty when the object has none.
QString textOf(const Json &object, const char *key);
/// The flag under `key`, or `fallback` when the object has none.
bool flagOf(const Json &object, const char *key, bool fallback);

/// Adds a text to the list of complaints about a field.
void complain(Json &errors, const std::string &field, const std::string &text);
/// Complains when a field is neither absent nor of the type; true when the field is there and usable.
bool isUsableText(Json &errors, const Json &object, const char *key);
bool isUsableFlag(Json &errors, const Json &object, const char *key);
/// Complains about a text that is no ISO 8601 time.
void checkTime(Json &errors, const Json &object, const char *key);
/// Complains when a field is absent, empty or no text.
void requireText(Json &errors, const Json &object, const char *key);

} // namespace parcelory
