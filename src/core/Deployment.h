#pragma once

#include "core/CompanySanitizer.h"
#include "core/ShippoAddress.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace parcelory {

/// What differs from one company to the next and is fixed in the build (deployment/README.md explains each value).
struct Deployment {
    QUrl carrierApi;       ///< https, path "/"
    QUrl backOffice;       ///< https
    QString shortLinkHost; ///< host of the invoice QR codes
    QString updateFeedHost;
    std::optional<QString> updatePublicKey; ///< Ed25519, base64; absent: updates need no signature
    QString supportTelephone;
    QString officeLabel; ///< name of the sender profile made on the first run
    ShippoAddress returnAddress;
    QList<QString> letterhead;              ///< head of a commercial invoice; the first line is the company's name
    std::optional<QString> countryOfOrigin; ///< of the goods; absent means the United States
    std::optional<QString> incoterm;        ///< terms of sale; absent means DDU
    QString fallbackEmail;                  ///< the sender's e-mail if a profile has no e-mail
    QString fallbackPhone;
    QList<StoreName> storeNames; ///< applied in this order

    // For the shipping rules.
    std::optional<bool> fedexContractAllowsCoins;
    std::optional<QString> insurerExclusion;    ///< a sentence: what the company's insurer does not cover
    std::optional<QStringList> insurerExcludes; ///< the knownContents() that it is about; absent means all
    std::optional<QStringList> usualContents;   ///< the knownContents() of a parcel whose description does not tell

    QString updateFeed; ///< address of the update feed; derived from updateFeedHost, not read from the file

    /// The words for the contents of a parcel.
    static const QStringList &knownContents();
    /// The values compiled into this build.
    static Deployment builtIn();
    /// Reads a deployment file; throws AppError that names the missing or invalid value.
    static Deployment parse(const QByteArray &json);

    static constexpr auto fields()
    {
        using D = Deployment;
        return std::tuple{field("carrierApi", &D::carrierApi),
                          field("backOffice", &D::backOffice),
                          field("shortLinkHost", &D::shortLinkHost),
                          field("updateFeedHost", &D::updateFeedHost),
                          field("updatePublicKey", &D::updatePublicKey),
                          field("supportTelephone", &D::supportTelephone),
                          field("officeLabel", &D::officeLabel),
                          field("returnAddress", &D::returnAddress),
                          field("letterhead", &D::letterhead),
                          field("countryOfOrigin", &D::countryOfOrigin),
                          field("incoterm", &D::incoterm),
                          field("fallbackEmail", &D::fallbackEmail),
                          field("fallbackPhone", &D::fallbackPhone),
                          field("storeNames", &D::storeNames),
                          field("fedexContractAllowsCoins", &D::fedexContractAllowsCoins),
                          field("insurerExclusion", &D::insurerExclusion),
                          field("insurerExcludes", &D::insurerExcludes),
                          field("usualContents", &D::usualContents)};
    }
};

} // namespace parcelory
