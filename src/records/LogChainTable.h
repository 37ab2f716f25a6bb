#pragma once

#include <QByteArray>

/// Words of the table of LogChain.
namespace parcelory::LogChain {

/// The kind of a row's first entry.
inline const QByteArray labelKind = "label";
/// Inserts an entry: shipment, kind, kept parts, hash.
inline const QByteArray entrySql = "INSERT INTO log_chain (shipment_id, kind, parts, hash) VALUES (?, ?, ?, ?)";

} // namespace parcelory::LogChain
