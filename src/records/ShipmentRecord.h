#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace parcelory {

/// One label in the mailing log. Status words: "PRINTED", "DELIVERED", "REFUND_PENDING", "REFUND_REQUESTED",
/// "REFUNDED", "REFUND_ERROR"; an imported row may hold any other, or none.
struct ShipmentRecord {
    qint64 id = 0; ///< given by the database
    QDateTime createdAt = QDateTime::currentDateTime();
    QString carrier = QStringLiteral("USPS");
    QString service;
    double postage = 0; ///< US dollars
    QString recipient;  ///< name and address in one line
    QString services;   ///< extra services
    QString tracking;
    QString trackingURL;
    QString weight; ///< for people: "2 lb 3.0 oz"
    double weightOz = 0;
    QString descriptionText;
    QString reference;
    QString transactionID;
    QString labelURL;
    QString status = QStringLiteral("PRINTED");
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
};

} // namespace parcelory
