#pragma once

#include "core/RecordField.h"

#include <QList>
#include <QString>

#include <tuple>

namespace parcelory {

/// A marketplace store; in company lines, its name is replaced by a short code.
struct StoreName {
    QString name; ///< lower case, no spaces
    QString code; ///< the short form printed instead

    static constexpr auto fields()
    {
        return std::tuple{field("name", &StoreName::name), field("code", &StoreName::code)};
    }
};

/// Makes a company line discreet: cuts words that reveal valuable contents to their initial.
class CompanySanitizer {
public:
    explicit CompanySanitizer(QList<StoreName> stores);

    /// "Smith Rare Coins & Bullion, LLC" becomes "Smith R C & B, LLC". Running it again changes nothing more
    /// unless a replacement happens to complete a listed word.
    QString sanitize(const QString &company) const;

private:
    QList<StoreName> m_stores;
};

} // namespace parcelory
