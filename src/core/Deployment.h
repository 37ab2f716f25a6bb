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
    std::optional<QString> updatePublicKey; ///< Ed25519, base64; none: updates need no signature
    QString supportTelephone;
    QString officeLabel; ///< name of the sender profile made on the first run
    ShippoAddress returnAddress;
    QList<QString> letterhead;              ///< head of a commercial invoice; the first line is the company's name
    std::optional<QString> countryOfOrigin; ///< of the goods; none is the United States
    std::optional<QString> incoterm;        ///< terms of sale; none is DDU
    QString fallbackEmail;                  ///< sender's e-mail where a profile has none
    QString fallbackPhone;
    QList<StoreName> storeNames; ///< applied in this order

    QString updateFeed; ///< address of the update feed; no value of the file, it follows from updateFeedHost

    /// The values compiled into this build.
    static Deployment builtIn();
    /// Reads a deployment file; throws AppError naming what is missing or not allowed.
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
                          field("storeNames", &D::storeNames)};
    }
};

} // namespace parcelory
