#include "practice/carrier/PracticeAnswers.h"

#include "core/IsoDate.h"
#include "core/Json.h"
#include "practice/PracticeTime.h"

#include <atomic>
#include <string>

namespace parcelory {
using namespace Qt::StringLiterals;

CarrierAnswer jsonAnswer(int status, const Json &body)
{
    return {.status = status, .body = dumpJson(body)};
}

CarrierAnswer detailAnswer(int status, const std::string &text)
{
    return jsonAnswer(status, {{"detail", text}});
}

CarrierAnswer notFoundPage(const QByteArray &path)
{
    const QByteArray shown = QString::fromUtf8(path).toHtmlEscaped().toUtf8();
    return {.status = 404,
            .body = "<h1>Not Found</h1><p>The requested URL " + shown + " was not found on this server.</p>",
            .contentType = "text/html"};
}

CarrierAnswer notFound()
{
    return detailAnswer(404, "Not found.");
}

std::string newObjectId()
{
    static std::atomic<int> posed{0};
    if (isPracticePosed())
        return u"5ea087207ae247988cfe%1"_s.arg(++posed, 12, 16, QChar(u'0')).toStdString();
    return QUuid::createUuid().toString(QUuid::Id128).toStdString();
}

Json newObject(bool test)
{
    const std::string now = timestampNow();
    return {{"object_created", now},
            {"object_updated", now},
            {"object_id", newObjectId()},
            {"object_owner", objectOwner},
            {"test", test}};
}

std::string timestamp(const QDateTime &time)
{
    return time.toUTC().toString(u"yyyy-MM-ddTHH:mm:ss.zzzZ"_s).toStdString();
}

std::string timestampNow()
{
    return timestamp(practiceNow().toUTC());
}

QString textOf(const Json &object, const char *key)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string())
        return QString();
    return QString::fromStdString(found->get_ref<const std::string &>());
}

bool flagOf(const Json &object, const char *key, bool fallback)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() ? found->get<bool>() : fallback;
}

void complain(Json &errors, const std::string &field, const std::string &text)
{
    errors[field].push_back(text);
}

bool isUsableText(Json &errors, const Json &object, const char *key)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return false;
    if (!found->is_string())
        complain(errors, key, "Not a valid string.");
    return found->is_string();
}

bool isUsableFlag(Json &errors, const Json &object, const char *key)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return false;
    if (!found->is_boolean())
        complain(errors, key, "Must be a valid boolean.");
    return found->is_boolean();
}

void checkTime(Json &errors, const Json &object, const char *key)
{
    if (!errors.contains(key) && isUsableText(errors, object, key) && !parseIso(textOf(object, key)))
        complain(errors, key, "Datetime has wrong format. Use YYYY-MM-DDThh:mm:ssZ.");
}

void requireText(Json &errors, const Json &object, const char *key)
{
    if (isUsableText(errors, object, key)) {
        if (textOf(object, key).isEmpty())
            complain(errors, key, "This field may not be blank.");
    } else if (!errors.contains(key)) {
        complain(errors, key, "This field is required.");
    }
}

} // namespace parcelory
