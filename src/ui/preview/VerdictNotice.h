#pragma once

#include "compose/LabelReadBack.h"
#include "ui/parts/Notice.h"

#include <optional>

namespace parcelory {

/// How a label compares with its parcel: the same words and colors wherever the label is shown.
class VerdictNotice : public Notice {
public:
    explicit VerdictNotice(QWidget *parent = nullptr);

    void setVerdict(const std::optional<LabelVerdict> &verdict);
};

} // namespace parcelory
