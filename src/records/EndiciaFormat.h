#pragma once

#include "records/ShipmentRecord.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// The mail log format of the Endicia postage software: tab-separated text, one record a line, 17 named columns,
/// no quoting, dates in the machine's time zone.
namespace EndiciaFormat {

/// The header line, without a line feed.
QString header();

/// A record's line, without a line feed. Tabs and line breaks in a field become blanks.
QString line(const ShipmentRecord &record);

/// The record of one line; nothing for the header and for lines with fewer than 12 fields.
std::optional<ShipmentRecord> parse(const QString &line);

/// The lines of a file, whatever ends them.
QStringList lines(const QString &text);

QString dateText(const QDateTime &time);
/// A date as dateText writes it. Two-digit years are of this century; an hour that a daylight-saving change skips is
/// read as the hour after it.
std::optional<QDateTime> parseDate(const QString &text);

} // namespace EndiciaFormat
} // namespace parcelory
