#include "core/Json.h"

#include "core/AppError.h"

#include <cctype>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Dates in our files are seconds since the start of 2001, UTC.
const QDateTime &referenceDate()
{
    static const QDateTime date = QDateTime::fromSecsSinceEpoch(978307200);
    return date;
}

QString printable(const std::string &path)
{
    return path.empty() ? u"the text"_s : u'"' + QString::fromStdString(path) + u'"';
}

/// Counts brackets outside strings. As far as the text is valid, the parser sees the same brackets, and no more.
bool isTooDeep(const QByteArray &text)
{
    int depth = 0;
    bool isInString = false;
    for (auto c = text.begin(); c != text.end(); ++c) {
        if (isInString && *c == '\\' && c + 1 != text.end())
            ++c;
        else if (*c == '"')
            isInString = !isInString;
        else if (!isInString && (*c == '[' || *c == '{') && ++depth > deepestJson)
            return true;
        else if (!isInString && (*c == ']' || *c == '}'))
            --depth;
    }
    return false;
}

/// Accepts every value, and notes where the text stops being JSON.
struct FaultFinder : nlohmann::json_sax<Json> {
    std::optional<qsizetype> place;

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t &) override { return true; }
    bool string(string_t &) override { return true; }
    bool binary(binary_t &) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t &) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t position, const std::string &, const nlohmann::detail::exception &) override
    {
        place = qsizetype(position);
        return false;
    }
};

} // namespace

namespace detail {

std::string keyFor(const char *fieldName, Keys keys)
{
    if (keys == Keys::asIs)
        return fieldName;
    std::string key;
    for (const char *c = fieldName; *c; ++c) {
        if (std::isupper(static_cast<unsigned char>(*c)))
            key += '_';
        key += char(std::tolower(static_cast<unsigned char>(*c)));
    }
    return key;
}

void mismatch(const std::string &path, const char *expected, const Json &found)
{
    throw DecodeError(u"%1: expected %2, got %3"_s.arg(printable(path), QLatin1StringView(expected),
                                                       QLatin1StringView(found.type_name())));
}

void missing(const std::string &path)
{
    throw DecodeError(u"missing key %1"_s.arg(printable(path)));
}

void decodeValue(const Json &json, QString &value, const std::string &path, Keys)
{
    if (!json.is_string())
        mismatch(path, "string", json);
    value = QString::fromStdString(json.get_ref<const std::string &>());
}

void decodeValue(const Json &json, bool &value, const std::string &path, Keys)
{
    if (!json.is_boolean())
        mismatch(path, "boolean", json);
    value = json.get<bool>();
}

void decodeValue(const Json &json, int &value, const std::string &path, Keys)
{
    const double number = json.is_number() ? json.get<double>() : std::numeric_limits<double>::infinity();
    if (number != std::floor(number) || number < std::numeric_limits<int>::min() ||
        number > std::numeric_limits<int>::max())
        mismatch(path, "whole number", json);
    value = int(number);
}

void decodeValue(const Json &json, double &value, const std::string &path, Keys)
{
    if (!json.is_number())
        mismatch(path, "number", json);
    value = json.get<double>();
}

void decodeValue(const Json &json, QUuid &value, const std::string &path, Keys keys)
{
    QString text;
    decodeValue(json, text, path, keys);
    value = QUuid::fromString(text); // also reads braces, and ignores what follows the id
    if (value.toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) != 0)
        mismatch(path, "UUID", json);
}

void decodeValue(const Json &json, QUrl &value, const std::string &path, Keys keys)
{
    QString text;
    decodeValue(json, text, path, keys);
    value = QUrl(text, QUrl::StrictMode);
    if (!value.isValid())
        mismatch(path, "address", json);
}

void decodeValue(const Json &json, QDateTime &value, const std::string &path, Keys)
{
    constexpr double farthest = 1e12; // seconds; date arithmetic is not reliable beyond this
    if (!json.is_number() || std::abs(json.get<double>()) > farthest)
        mismatch(path, "number", json);
    value = referenceDate().addMSecs(qRound64(json.get<double>() * 1000)).toLocalTime();
}

Json encodeValue(const QString &value, Keys)
{
    return value.toStdString();
}

Json encodeValue(bool value, Keys)
{
    return value;
}

Json encodeValue(int value, Keys)
{
    return value;
}

Json encodeValue(double value, Keys)
{
    return value;
}

Json encodeValue(const QUuid &value, Keys)
{
    return value.toString(QUuid::WithoutBraces).toUpper().toStdString();
}

Json encodeValue(const QDateTime &value, Keys)
{
    return double(referenceDate().msecsTo(value)) / 1000;
}

} // namespace detail

Json parseJson(const QByteArray &text)
{
    if (isTooDeep(text))
        throw DecodeError(u"it is nested too deeply"_s);
    Json json = Json::parse(text.begin(), text.end(), nullptr, false);
    if (json.is_discarded())
        throw DecodeError(u"it is not JSON"_s);
    return json;
}

std::optional<Json> parseJsonIfPossible(const QByteArray &text)
{
    try {
        return parseJson(text);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

std::optional<qsizetype> firstFault(const QByteArray &text)
{
    FaultFinder finder;
    Json::sax_parse(text.begin(), text.end(), &finder);
    return finder.place;
}

QByteArray dumpJson(const Json &json)
{
    return QByteArray::fromStdString(json.dump());
}

} // namespace parcelory
