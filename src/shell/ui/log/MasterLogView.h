#pragma once

#include "shell/ui/parts/Surface.h"

namespace parcelory {

/// The Master Log tab. It says what will stand there.
class MasterLogView : public Surface {
    Q_OBJECT
public:
    explicit MasterLogView(QWidget *parent = nullptr);
};

} // namespace parcelory
