#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <functional>

namespace parcelory {

/// Property lists, the data format of macOS programs, in both of its forms: XML and binary.
namespace PropertyList {

using Texts = QHash<QString, QString>; ///< a dictionary's text values, by their keys

/// Reads a list of dictionaries and hands each to `take`. False if the file holds something else or is not a property
/// list; throws AppError if it is damaged, possibly after some dictionaries.
bool readDictionaries(const QByteArray &file, const std::function<void(const Texts &)> &take);

} // namespace PropertyList
} // namespace parcelory
