#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <functional>

namespace parcelory {

/// Property lists, the format in which programs of macOS keep their data, in both of its forms: XML and binary.
namespace PropertyList {

using Texts = QHash<QString, QString>; ///< a dictionary's values that are texts, by their keys

/// Reads a list of dictionaries and hands each to `take`. False when the file holds something else or is no property
/// list; throws AppError when it is damaged, possibly after some dictionaries.
bool readDictionaries(const QByteArray &file, const std::function<void(const Texts &)> &take);

} // namespace PropertyList
} // namespace parcelory
