#pragma once

#include "core/RecordField.h"

#include <QString>
#include <QUuid>

#include <tuple>

namespace parcelory {

/// A carton that the desk ships in. Inside dimensions in inches, as typed.
struct BoxProfile {
    QUuid id = QUuid::createUuid();
    QString name;
    QString length;
    QString width;
    QString height;

    /// 12×10×8", or "no dims".
    QString dimsDisplay() const;
    /// The name; a box without a name goes by its dimensions.
    QString title() const;

    static constexpr auto fields()
    {
        using B = BoxProfile;
        return std::tuple{field("id", &B::id), field("name", &B::name), field("length", &B::length),
                          field("width", &B::width), field("height", &B::height)};
    }
    bool operator==(const BoxProfile &) const = default;
};

} // namespace parcelory
