#pragma once

#include "core/CompanySanitizer.h"
#include "core/PostalContact.h"
#include "core/ShippoAddress.h"

#include <QString>

namespace parcelory {

/// Whether the contact's name is its company, ignoring case and extra blanks.
bool isNamedAfterCompany(const PostalContact &contact);

/// Tells which entries of the address book are the recipient of a label, even after the carrier has rewritten the
/// street and ZIP code: the same name, company, house number with the street's first word (or the whole line, such as a
/// PO box), unit and five-digit ZIP; without a ZIP the whole line, the city and the country. Without a name the company
/// is the name; a blank name matches only the same address. The sanitizer must outlive this.
class RecipientMatch {
public:
    RecipientMatch(const PostalContact &recipient, const CompanySanitizer &sanitizer);

    bool matches(const PostalContact &entry) const;

private:
    const CompanySanitizer &m_sanitizer;
    const ShippoAddress m_address;
    QString m_name, m_company, m_place, m_unit, m_area;
};

} // namespace parcelory
