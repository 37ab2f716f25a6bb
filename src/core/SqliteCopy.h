#pragma once

#include "core/Progress.h"

#include <QString>

#include <functional>

namespace parcelory {

class Database;

/// Runs a portion of a copy while no other thread is in a transaction on the connection.
using CopyTurn = std::function<void(const std::function<void()> &portion)>;

/// Copies the content of `from` into the new file `path`, in portions of 2 MB, without flushing it to the disk. Between
/// two portions, other threads can use the connection: SQLite carries their writes over into the copy. A write of
/// another connection makes SQLite start the copy again; after a few such starts the copy fails. It also fails
/// once another file is in the place of `from`: it would count as a copy of that file. Returns why it failed,
/// or nothing if it is complete or was canceled. `progress` counts pages; it is called between two portions.
QString copyDatabase(
    const Database &from, const QString &path, const Progress &progress = {},
    const CopyTurn &inTurn = [](const auto &portion) { portion(); });

} // namespace parcelory
