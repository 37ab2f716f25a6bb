#pragma once

#include "carrier/ShippoRecords.h"
#include "core/RecordField.h"
#include "core/Task.h"

#include <QByteArray>
#include <QList>

#include <optional>
#include <tuple>

namespace parcelory {

class AppState;
class LabelScreen;

/// A parcel of an orders file, in the label screen's terms. Carrier, service class and extra service stay as the screen
/// has them if the order omits them.
struct PracticeOrder {
    std::optional<QString> invoice; ///< its number in the practice back office, which knows the recipient
    std::optional<ShippoAddress> to;
    std::optional<QString> carrier;      ///< "usps" or "fedex"
    std::optional<QString> mailpiece;    ///< id of a builtin mailpiece or of a stock mailer
    std::optional<QString> serviceClass; ///< the carrier API's token
    std::optional<QString> option;       ///< raw value of an extra service
    QString weightLb;
    QString weightOz;
    std::optional<QString> length, width, height; ///< inches
    std::optional<QString> insurance;
    std::optional<bool> residential;
    std::optional<QString> contents; ///< raw value of a customs item type
    std::optional<QString> quantity, declaredValue, signer;
    std::optional<QString> reference, description;

    static constexpr auto fields()
    {
        using O = PracticeOrder;
        return std::tuple{field("invoice", &O::invoice),
                          field("to", &O::to),
                          field("carrier", &O::carrier),
                          field("mailpiece", &O::mailpiece),
                          field("serviceClass", &O::serviceClass),
                          field("option", &O::option),
                          field("weightLb", &O::weightLb),
                          field("weightOz", &O::weightOz),
                          field("length", &O::length),
                          field("width", &O::width),
                          field("height", &O::height),
                          field("insurance", &O::insurance),
                          field("residential", &O::residential),
                          field("contents", &O::contents),
                          field("quantity", &O::quantity),
                          field("declaredValue", &O::declaredValue),
                          field("signer", &O::signer),
                          field("reference", &O::reference),
                          field("description", &O::description)};
    }
};

/// Reads an orders file, or the sample orders when `path` is empty. Throws AppError naming what is wrong with it.
QList<PracticeOrder> readOrders(const QString &path);

/// Puts an order into the draft of the label screen, its invoice read by the signed-in `app`. Throws AppError for a
/// word that the screen does not know and for an invoice that cannot be read.
Task<> compose(PracticeOrder order, AppState &app, LabelScreen &screen);

} // namespace parcelory
