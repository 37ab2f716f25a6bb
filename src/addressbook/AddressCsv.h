#pragma once

#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"

#include <QByteArray>
#include <QList>

namespace parcelory {

/// The address book as a comma-separated file, for a spreadsheet.
namespace AddressCsv {

/// The names of the columns, with the mark by which spreadsheets know UTF-8.
QByteArray header();
/// A contact's row. Every field is quoted, so that read() can tell whether another program has saved the file.
QByteArray row(const PostalContact &contact);

/// Whether this program wrote the file, or another program saved it since.
bool isExport(const QByteArray &file);
/// The contacts, exactly as they were written. Throws AppError if the file is damaged or another program has saved it:
/// a spreadsheet drops the zeros before a ZIP code. Throws what `progress` throws.
QList<PostalContact> read(const QByteArray &file, ImportProgress &progress);

} // namespace AddressCsv
} // namespace parcelory
