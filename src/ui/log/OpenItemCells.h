#pragma once

#include "records/OpenItems.h"

#include <QList>
#include <QString>

#include <vector>

/// What the cells of the open items show.
namespace parcelory::OpenItemCells {

enum Column { mark, what, recipient, tracking, age, step, columnTotal };

/// The name of a picture.
QString iconOf(OpenReason reason);
QString iconOf(OpenStep step);
QString firstLine(const OpenItem &item, int column);
QString secondLine(const OpenItem &item, int column);
/// The places of the items in the order of a column; empty if that is the order in which they come, by falling age.
std::vector<qsizetype> orderOf(const QList<OpenItem> &items, int column, bool isFalling);

} // namespace parcelory::OpenItemCells
