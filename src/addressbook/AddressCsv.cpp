#include "addressbook/AddressCsv.h"

#include "addressbook/ImportProgress.h"
#include "core/AppError.h"
#include "core/Csv.h"
#include "core/PostalContact.h"

#include <QStringList>

#include <QStringConverter>

#include <algorithm>
#include <tuple>
#include <utility>

namespace parcelory::AddressCsv {
using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView utf8Mark = "\xEF\xBB\xBF";

QByteArray quotedRow(const QStringList &fields)
{
    return csvRow(fields).toUtf8() + "\r\n";
}

[[noreturn]] void failChanged()
{
    throw AppError(
        u"This file was damaged or saved by another program, which may have changed ZIP codes, so nothing was "
        "imported. Import the vCard export instead."_s);
}

/// A byte order mark is a part of the field, which QString::fromUtf8 would drop.
QString textOf(const QByteArray &field)
{
    return QStringDecoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom)(field);
}

/// Takes the next quoted field of a row; `at` is then behind it.
QString takeField(const QByteArray &file, qsizetype &at)
{
    if (at >= file.size() || file[at] != '"')
        failChanged();
    QByteArray field;
    while (true) {
        const qsizetype quote = file.indexOf('"', ++at);
        if (quote < 0)
            failChanged();
        field += QByteArrayView(file).sliced(at, quote - at);
        at = quote + 1;
        if (at >= file.size() || file[at] != '"')
            return textOf(field);
        field += '"';
    }
}

void take(const QByteArray &file, qsizetype &at, QByteArrayView wanted)
{
    if (!QByteArrayView(file).sliced(at).startsWith(wanted))
        failChanged();
    at += wanted.size();
}

} // namespace

QByteArray header()
{
    return utf8Mark.toByteArray() +
           quotedRow({u"Name"_s, u"Company"_s, u"Street"_s, u"Apt / Suite"_s, u"City"_s, u"State"_s, u"ZIP"_s,
                      u"Country"_s, u"Label"_s, u"Phone"_s, u"Email"_s, u"ID"_s});
}

QByteArray row(const PostalContact &contact)
{
    const auto fields = [&contact](const auto &, const auto &...texts) {
        return QStringList{contact.*texts.member..., contact.id.toString(QUuid::WithoutBraces)};
    };
    return quotedRow(std::apply(fields, PostalContact::fields())); // the id is the first field and the last column
}

bool isExport(const QByteArray &file)
{
    QByteArray names = file.first(std::min(file.size(), header().size()));
    names.replace(utf8Mark, "").replace("\"", "").replace(';', ',').replace('\t', ','); // as spreadsheets write them
    return names.startsWith("Name,Company,Street,Apt / Suite,");
}

QList<PostalContact> read(const QByteArray &file, ImportProgress &progress)
{
    QList<PostalContact> contacts;
    qsizetype at = 0;
    take(file, at, header());
    while (at < file.size()) {
        PostalContact contact;
        const auto takeTexts = [&](const auto &, const auto &...texts) {
            ((contact.*texts.member = takeField(file, at), take(file, at, ",")), ...);
        };
        std::apply(takeTexts, PostalContact::fields());
        contact.id = QUuid::fromString(takeField(file, at));
        if (contact.id.isNull())
            failChanged();
        take(file, at, "\r\n");
        contacts.append(std::move(contact));
        progress.reached(contacts.size());
    }
    return contacts;
}

} // namespace parcelory::AddressCsv
