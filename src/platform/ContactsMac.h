#pragma once

#include "core/ports/ContactsSource.h"

namespace parcelory {

/// The contacts of macOS.
class ContactsMac : public ContactsSource {
public:
    int authorizationStatus() override;
    bool requestAccess() override;
    bool openLegacy() override;
    void readLegacy(const Take &take) override;
    qsizetype containerCount() override;
    void read(const Request &request, const Take &take) override;
};

} // namespace parcelory
