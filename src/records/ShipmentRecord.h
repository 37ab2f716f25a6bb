#pragma once

#include "core/RecordField.h"
#include "records/StatusWords.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>
#include <tuple>

namespace parcelory {

/// One label in the mailing log.
struct ShipmentRecord {
    qint64 id = 0;                                      ///< given by the database
    QDateTime createdAt = QDateTime::currentDateTime(); ///< invalid if an imported row has no readable date
    QString carrier = QStringLiteral("USPS");
    QString service;
    double postage = 0; ///< US dollars
    QString recipient;  ///< name and address in one line
    QString services;   ///< extra services
    QString tracking;
    QString trackingURL;
    QString weight; ///< for display: "2 lb 3.0 oz"
    double weightOz = 0;
    QString descriptionText;
    QString reference;
    QString transactionID;
    QString labelURL;
    QString status = wordOf(LogStatus::printed); ///< an imported row may hold any text; see logStatusFrom()
    bool testMode = false;
    QString zip11;
    QString declaredValue;
    QString groupCode;
    QString email;
    QString balance;
    std::optional<QByteArray> zpl; ///< never loaded with a list; see ShipmentLog::zpl
    bool isIntl = false;
    QString customsDocURL;
    std::optional<QByteArray> customsPDF; ///< never loaded with a list
    bool hasCustomsPDF = false;           ///< computed on read
    QString refund; ///< a refund that `status` no longer tells, in the words of a status; computed on read

    bool operator==(const ShipmentRecord &) const = default;

    /// The part of `recipient` before the first comma; the rest is the address.
    QString recipientName() const { return recipient.section(u',', 0, 0).trimmed(); }

    /// The fields that are known before the shipment has a row: all but the id, the documents and
    /// what is computed.
    static constexpr auto fields()
    {
        using R = ShipmentRecord;
        return std::tuple{field("createdAt", &R::createdAt),
                          field("carrier", &R::carrier),
                          field("service", &R::service),
                          field("postage", &R::postage),
                          field("recipient", &R::recipient),
                          field("services", &R::services),
                          field("tracking", &R::tracking),
                          field("trackingURL", &R::trackingURL),
                          field("weight", &R::weight),
                          field("weightOz", &R::weightOz),
                          field("descriptionText", &R::descriptionText),
                          field("reference", &R::reference),
                          field("transactionID", &R::transactionID),
                          field("labelURL", &R::labelURL),
                          field("status", &R::status),
                          field("testMode", &R::testMode),
                          field("zip11", &R::zip11),
                          field("declaredValue", &R::declaredValue),
                          field("groupCode", &R::groupCode),
                          field("email", &R::email),
                          field("balance", &R::balance),
                          field("isIntl", &R::isIntl),
                          field("customsDocURL", &R::customsDocURL)};
    }
};

} // namespace parcelory
