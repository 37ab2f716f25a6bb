#pragma once

#include "records/EndiciaDates.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace parcelory {

/// The mail log format of the Endicia postage software: tab-separated text, one record a line, 17 named columns,
/// no quoting, dates in the machine's time zone.
namespace EndiciaFormat {

/// The header line, without a line feed.
QString header();

/// The fields of a shipment's line. Texts are UTF-8.
struct Line {
    QByteArrayView status;
    std::optional<qint64> createdAt = 0; ///< milliseconds since 1970; nothing if a line's date is in no known form
    QByteArrayView transactionID, recipient, zip11;
    double postage = 0, weightOz = 0;
    QByteArrayView balance, service, services, tracking, declaredValue, descriptionText, reference, groupCode, email;
};

/// Appends a shipment's line in UTF-8 with its line feed. Tabs and line breaks in a field become blanks.
void append(QByteArray &text, const Line &line, EndiciaDates &dates);

/// Removes the next non-empty line from the front of a UTF-8 text and returns it, with any kind of line end; empty if
/// no line is left.
QByteArrayView takeLine(QByteArrayView &text);

/// Removes whole lines of about so many bytes from the front of a UTF-8 text and returns them with their line ends, or
/// all of the text. A longer line is not divided.
QByteArrayView takeLines(QByteArrayView &text, qsizetype size);

/// How many lines end in a UTF-8 text; a carriage return with its line feed is one end.
int lineEnds(QByteArrayView text);

/// True for a line that holds no shipment and should not.
bool isHeaderOrBlank(QByteArrayView line);

/// The tracking number of a shipment's line; empty for any other line.
QByteArray trackingOf(QByteArrayView line);

/// The fields of one line, whose bytes must outlive them; nothing for the header and for lines with fewer than 12
/// fields.
std::optional<Line> parse(QByteArrayView line, EndiciaDates &dates);

/// The weight of an imported shipment for display: "1 lb 8.5 oz"; empty if it is unknown.
QByteArray shownWeight(double ounces);

} // namespace EndiciaFormat
} // namespace parcelory
