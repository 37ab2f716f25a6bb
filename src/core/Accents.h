#pragma once

#include <QString>

namespace parcelory {

/// The text with every letter as its plain letter: é as e, ł as l, ß as ss. Case stays.
QString withoutAccents(const QString &text);

/// The form in which a search compares texts if spelling is to matter less: lower case, without accents.
QString plainForm(const QString &text);

} // namespace parcelory
