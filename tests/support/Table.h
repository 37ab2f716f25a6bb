#pragma once

#include "core/Json.h"          // IWYU pragma: export
#include "core/ShippoAddress.h" // IWYU pragma: export
#include "support/Test.h"       // IWYU pragma: export

namespace parcelory::test {

/// The rows of a table in tests/data/tables/FILE.jsonc, which is an object of tables by name.
inline Json table(const QString &file, const char *name)
{
    const QByteArray bytes = dataFile(u"tables/"_s + file + u".jsonc"_s);
    const Json all = Json::parse(bytes.begin(), bytes.end(), nullptr, false, true); // with comments
    EXPECT_TRUE(all.contains(name)) << name;
    return all.value(name, Json::array());
}

/// A cell's text; empty for null.
inline QString text(const Json &cell)
{
    return cell.is_null() ? QString() : QString::fromStdString(cell.get<std::string>());
}
/// A cell's bytes, each written as a character up to \u00ff.
inline QByteArray bytes(const Json &cell)
{
    return text(cell).toLatin1();
}
/// The body of an answer: a text as it is, anything else as JSON.
inline QByteArray body(const Json &cell)
{
    return cell.is_string() ? bytes(cell) : dumpJson(cell);
}
inline QStringList texts(const Json &cells)
{
    QStringList all;
    for (const Json &cell : cells)
        all += text(cell);
    return all;
}
/// A record with other values in the fields that `values` names.
template <class T>
T changed(const T &record, const Json &values)
{
    Json whole = parseJson(encodeJson(record, Keys::asIs));
    whole.update(values);
    return decodeJson<T>(dumpJson(whole), Keys::asIs);
}
/// An address with these fields; in the US if no country is named.
inline ShippoAddress addressOf(const Json &fields)
{
    return changed(ShippoAddress{.country = u"US"_s}, fields);
}
/// Nothing for null.
template <class Value>
std::optional<Value> optional(const Json &cell)
{
    return cell.is_null() ? std::nullopt : std::optional(cell.get<Value>());
}
inline std::optional<QString> optionalText(const Json &cell)
{
    return cell.is_null() ? std::nullopt : std::optional(text(cell));
}

} // namespace parcelory::test
