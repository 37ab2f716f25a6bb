#pragma once

#include "records/LabelEvents.h"
#include "records/ShipmentRecord.h"

#include <QList>

#include <optional>

namespace parcelory {

/// A label of a day, and what is known about it besides its row.
struct DayLabel {
    ShipmentRecord record;
    std::optional<QDateTime> onForm; ///< when the SCAN form that lists it was made
    PrintState print = PrintState::unknown;
    bool isElectronic = false; ///< its customs papers travel electronically

    bool operator==(const DayLabel &) const = default;
};

/// Why a USPS label is not meant for a SCAN form.
enum class Exemption { refund, otherKey, imported };

struct ExemptLabel {
    ShipmentRecord record;
    Exemption reason = Exemption::refund;

    bool operator==(const ExemptLabel &) const = default;
};

/// What the desk spent on one service.
struct ServiceSpend {
    QString carrier, service;
    int labels = 0;
    double dollars = 0;

    bool operator==(const ServiceSpend &) const = default;
};

/// The labels that the desk bought on one day, by what is left to do about them. A label may be in several lists.
struct DayOfLabels {
    QList<DayLabel> all; ///< in the order of their purchase
    QList<DayLabel> notOnForm, onForm;
    QList<ExemptLabel> exempt;
    QList<DayLabel> toHandOver; ///< FedEx labels, which need no form
    QList<DayLabel> unprinted;  ///< never printed, or not confirmed
    QList<ServiceSpend> spend;  ///< by carrier, the dearest service first
    int counted = 0;            ///< labels in `spend`
    double dollars = 0;         ///< their sum
    qsizetype uspsLabels() const { return notOnForm.size() + onForm.size() + exempt.size(); }

    bool operator==(const DayOfLabels &) const = default;
};

/// How the active key looks at labels.
struct KeyView {
    bool test = false;     ///< TEST labels belong to it
    bool practice = false; ///< the practice desk, whose TEST labels count like postage

    bool operator==(const KeyView &) const = default;
};

/// Refunded and pending labels are listed, not counted; a TEST label never counts, but on the practice desk.
DayOfLabels sortDay(const QList<DayLabel> &labels, KeyView key);

} // namespace parcelory
