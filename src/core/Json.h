#pragma once

// Reads and writes records by their field tables. Include it in .cpp files, not in widely used headers:
// nlohmann/json.hpp adds a second of compile time per file.

#include "core/AppError.h"
#include "core/RecordField.h"

#include <nlohmann/json.hpp>

#include <QDateTime>
#include <QList>
#include <QUrl>
#include <QUuid>

#include <optional>
#include <string>

namespace parcelory {

using Json = nlohmann::ordered_json; ///< keeps the order in which keys were written

/// How field names become keys: object_id for the carrier, objectId in our own files.
enum class Keys { snake, asIs };

/// A list that decodes without its unreadable elements, so that a damaged element does not cost the others.
template <class T>
struct ReadableList {
    QList<T> elements;
    qsizetype unreadable = 0; ///< how many elements were left out
};

namespace detail {

std::string keyFor(const char *fieldName, Keys keys);
[[noreturn]] void mismatch(const std::string &path, const char *expected, const Json &found);
[[noreturn]] void missing(const std::string &path);

void decodeValue(const Json &json, QString &value, const std::string &path, Keys);
void decodeValue(const Json &json, bool &value, const std::string &path, Keys);
void decodeValue(const Json &json, int &value, const std::string &path, Keys);
void decodeValue(const Json &json, double &value, const std::string &path, Keys);
void decodeValue(const Json &json, QUuid &value, const std::string &path, Keys);
void decodeValue(const Json &json, QUrl &value, const std::string &path, Keys);
void decodeValue(const Json &json, QDateTime &value, const std::string &path, Keys);
template <Record R>
void decodeValue(const Json &json, R &record, const std::string &path, Keys keys);

template <class T>
void decodeValue(const Json &json, QList<T> &list, const std::string &path, Keys keys)
{
    if (!json.is_array())
        mismatch(path, "array", json);
    list.clear();
    list.reserve(qsizetype(json.size()));
    for (const Json &element : json) {
        T value;
        decodeValue(element, value, path + '[' + std::to_string(list.size()) + ']', keys);
        list.append(std::move(value));
    }
}

template <class T>
void decodeValue(const Json &json, ReadableList<T> &list, const std::string &path, Keys keys)
{
    if (!json.is_array())
        mismatch(path, "array", json);
    list = {};
    for (const Json &element : json) {
        try {
            T value;
            decodeValue(element, value, path, keys);
            list.elements.append(std::move(value));
        } catch (const DecodeError &) {
            ++list.unreadable;
        }
    }
}

template <class T>
void decodeValue(const Json &json, std::optional<T> &value, const std::string &path, Keys keys)
{
    value.reset();
    if (!json.is_null())
        decodeValue(json, value.emplace(), path, keys);
}

template <class T>
constexpr bool isOptional = false;
template <class T>
constexpr bool isOptional<std::optional<T>> = true;

template <Record R>
void decodeValue(const Json &json, R &record, const std::string &path, Keys keys)
{
    if (!json.is_object())
        mismatch(path, "object", json);
    const auto decodeField = [&](const auto &entry) {
        auto &member = record.*(entry.member);
        const std::string key = keyFor(entry.name, keys);
        const std::string keyPath = path.empty() ? key : path + '.' + key;
        if (const auto found = json.find(key); found != json.end())
            decodeValue(*found, member, keyPath, keys);
        else if constexpr (!isOptional<std::decay_t<decltype(member)>>)
            missing(keyPath);
    };
    std::apply([&](const auto &...entries) { (decodeField(entries), ...); }, R::fields());
}

Json encodeValue(const QString &value, Keys);
Json encodeValue(bool value, Keys);
Json encodeValue(int value, Keys);
Json encodeValue(double value, Keys);
Json encodeValue(const QUuid &value, Keys);
Json encodeValue(const QDateTime &value, Keys);
template <Record R>
Json encodeValue(const R &record, Keys keys);

template <class T>
Json encodeValue(const QList<T> &list, Keys keys)
{
    Json array = Json::array();
    for (const T &value : list)
        array.push_back(encodeValue(value, keys));
    return array;
}

template <Record R>
Json encodeValue(const R &record, Keys keys)
{
    Json object = Json::object();
    const auto encodeField = [&](const auto &entry) {
        const auto &member = record.*(entry.member);
        if constexpr (isOptional<std::decay_t<decltype(member)>>) {
            if (member)
                object[keyFor(entry.name, keys)] = encodeValue(*member, keys);
        } else {
            object[keyFor(entry.name, keys)] = encodeValue(member, keys);
        }
    };
    std::apply([&](const auto &...entries) { (encodeField(entries), ...); }, R::fields());
    return object;
}

} // namespace detail

/// Arrays and objects that nest deeper are refused: copying, writing and reading a value take stack for each level.
constexpr int deepestJson = 100;

/// Parses JSON; throws DecodeError if the text is not JSON or nests too deeply. Nothing else in the program parses
/// JSON.
Json parseJson(const QByteArray &text);
/// The same, but nothing instead of an error.
std::optional<Json> parseJsonIfPossible(const QByteArray &text);

/// Where a text stops being JSON, in bytes; nothing for JSON.
std::optional<qsizetype> firstFault(const QByteArray &text);

/// The compact text of a JSON value.
QByteArray dumpJson(const Json &json);

/// A record (or a list of records) from its JSON text. Unknown keys are ignored; a missing or wrongly typed key throws
/// DecodeError and names it.
template <class T>
T decodeJson(const QByteArray &text, Keys keys)
{
    T value;
    detail::decodeValue(parseJson(text), value, std::string(), keys);
    return value;
}

/// The compact JSON text of a record or a list of records, keys in the order of the field table.
template <class T>
QByteArray encodeJson(const T &value, Keys keys)
{
    return dumpJson(detail::encodeValue(value, keys));
}

} // namespace parcelory
