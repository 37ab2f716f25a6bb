#include "app/addressbook/AddressBook.h"

#include "addressbook/AddressCsv.h"
#include "addressbook/LocalAddressStore.h"
#include "addressbook/VCard.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/SaveFile.h"
#include "core/StatusKind.h"
#include "core/Task.h"

#include <QFileInfo>
#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Writes the book as it is in the store, and returns how many addresses it has.
qsizetype exportBook(const LocalAddressStore &store, const QString &path, AddressBook::Format format)
{
    const LocalAddressStore::Book book = store.read();
    if (!book.failure.isEmpty())
        throw AppError(u"the address book could not be read — "_s + book.failure);
    const bool isCsv = format == AddressBook::Format::csv;
    [[maybe_unused]] const bool isWritten = saveFile(path, [&](QIODevice &file) {
        if (isCsv)
            file.write(AddressCsv::header());
        for (const PostalContact &contact : book.contacts)
            file.write(isCsv ? AddressCsv::row(contact) : VCard::card(contact));
        return true;
    });
    return book.contacts.size();
}

} // namespace

Task<> AddressBook::exportTo(Format format)
{
    if (exporting)
        co_return;
    exporting = true;
    const auto done = qScopeGuard([this] { exporting = false; });
    const QString name = format == Format::csv ? u"Address Book.csv"_s : u"Address Book.vcf"_s;
    const QString path = co_await m_app.platform.prompts.saveFile(u"Export Address Book"_s, name);
    if (path.isEmpty())
        co_return;
    try {
        const qsizetype count =
            co_await onPool([&store = m_app.addressBook, path, format] { return exportBook(store, path, format); });
        setStatus(StatusKind::success,
                  (count == 1 ? u"Exported %1 address to "_s : u"Exported %1 addresses to "_s).arg(count) +
                      QFileInfo(path).fileName());
    } catch (const AppError &error) {
        setStatus(StatusKind::failure,
                  u"Export failed: "_s + m_app.recorded(u"Address Book Export"_s, error, Popup::no));
    }
}

} // namespace parcelory
