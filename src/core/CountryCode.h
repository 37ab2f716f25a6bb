#pragma once

#include <QString>

#include <optional>

namespace parcelory {

/// Converts free-text countries to ISO 3166-1 alpha-2 codes and to English names.
namespace CountryCode {

/// The code of a country written in any usual English form ("u.s.a.", "England", "Korea, South", "de"), with or without
/// "the", "and" and accents, or in one of its own languages ("Deutschland"). Nothing for an unknown country.
std::optional<QString> find(const QString &text);

/// The code of a country in any of these forms.
/// Empty for a blank text; an unknown country comes back trimmed and in capitals, never dropped.
QString alpha2(const QString &text);

/// The English name of a country written in any of these forms ("us" is "United States"); an unknown country is only
/// trimmed.
QString displayName(const QString &text);

} // namespace CountryCode
} // namespace parcelory
