#pragma once

#include "practice/carrier/CarrierScenario.h"

#include <nlohmann/json_fwd.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <string>

namespace parcelory {

using Json = nlohmann::ordered_json;

/// The response to a request.
struct CarrierAnswer {
    int status = 200;
    QByteArray body = {};
    QByteArray contentType = "application/json";
    QByteArray rateLimitReset = {}; ///< Unix time at which the limit resets; empty omits the header
    bool brokenOff = false;         ///< the connection ends after half of the body
    AnswerFlow flow = AnswerFlow::whole;
};

CarrierAnswer jsonAnswer(int status, const Json &body);
/// An error that is not about fields, as the service words it: {"detail": "…"}.
CarrierAnswer detailAnswer(int status, const std::string &text);
/// The response to an unknown path or tracking number: an HTML page, not JSON.
CarrierAnswer notFoundPage(const QByteArray &path);
/// The response to an unknown id.
CarrierAnswer notFound();

inline constexpr const char *objectOwner = "desk@example.com";

/// 32 hexadecimal digits.
std::string newObjectId();
/// The fields that every record starts with: id, owner, times and test flag.
Json newObject(bool test);
/// UTC with milliseconds: 2022-01-10T17:24:13.283Z.
std::string timestamp(const QDateTime &time);
std::string timestampNow();

/// The text under `key`; empty when the object has none.
QString textOf(const Json &object, const char *key);
/// The flag under `key`, or `fallback` when the object has none.
bool flagOf(const Json &object, const char *key, bool fallback);

/// Adds a text to the errors of a field.
void complain(Json &errors, const std::string &field, const std::string &text);
/// Adds an error if a field is present but of a wrong type; true if the field is present and usable.
bool isUsableText(Json &errors, const Json &object, const char *key);
bool isUsableFlag(Json &errors, const Json &object, const char *key);
/// Adds an error if a text is not an ISO 8601 time.
void checkTime(Json &errors, const Json &object, const char *key);
/// Adds an error if a field is absent, empty or not a text.
void requireText(Json &errors, const Json &object, const char *key);

} // namespace parcelory
