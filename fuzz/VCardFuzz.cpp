#include "ReadFuzz.h"
#include "addressbook/AddressCsv.h"
#include "addressbook/VCard.h"

#include <algorithm>

/// Any contact that is read must come back from both exports.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace parcelory;
    fuzz::read(
        [](const QByteArray &file, ImportProgress &progress) {
            const QList<PostalContact> contacts = VCard::read(file, progress).contacts;
            for (const PostalContact &contact : contacts.first(std::min<qsizetype>(contacts.size(), 3))) {
                ImportProgress again;
                const QList<PostalContact> same = {contact};
                const ReadAddresses back = VCard::read(VCard::card(contact), again);
                if (back.exported != same || !back.contacts.isEmpty() ||
                    AddressCsv::read(AddressCsv::header() + AddressCsv::row(contact), again) != same)
                    std::abort();
            }
            return contacts;
        },
        data, size);
    return 0;
}
