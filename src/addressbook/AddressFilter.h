#pragma once

#include "core/PostalContact.h"

#include <QList>
#include <QLocale>

#include <string>
#include <vector>

namespace parcelory {

/// The searchable texts of the address book in one block of memory, so that 100,000 contacts are filtered between two
/// keystrokes.
class AddressFilter {
public:
    AddressFilter() = default;
    /// `locale`: its rules define which letters differ only in case.
    explicit AddressFilter(const QList<PostalContact> &contacts, const QLocale &locale = QLocale());

    /// The positions in the list, ascending, of the contacts whose name, company or summary contains the query. Case,
    /// accents and the blanks around the query are ignored; an empty query returns all contacts.
    QList<int> filtered(const QString &query) const;

    /// The form in which texts are compared, in UTF-8.
    static std::string folded(const QString &text, const QLocale &locale);

private:
    QLocale m_locale;
    std::string m_block;                  ///< every contact's texts, folded
    std::vector<std::size_t> m_starts{0}; ///< where each contact begins, and where the last one ends
};

} // namespace parcelory
