#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace parcelory {

/// A day's list of labels and sums on one US Letter page for the office printer.
namespace DayPage {

struct Column {
    double width = 0; ///< points
    bool isNumber = false;
};

struct Section {
    QString title;
    QList<Column> columns;
    QList<QStringList> rows; ///< a row that has fewer fields than columns ends early
};

struct Data_ {
    QString title;    ///< "End of Day — Friday, November 20, 2026"
    QString subtitle; ///< the sums
    QList<Section> sections;
    QString foot;
};

/// The width that the columns of a section share, in points.
constexpr double width = 492;

/// The page as a PDF. If there are too many rows, the longest sections are shortened, and say so. May be called on any
/// thread. Throws AppError in a program without a QGuiApplication, which the fonts need.
QByteArray pdf(const Data_ &data);

} // namespace DayPage
} // namespace parcelory
