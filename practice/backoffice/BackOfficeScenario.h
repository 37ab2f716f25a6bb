#pragma once

#include <chrono>

namespace parcelory {

/// Faults of the practice back office. The default is a back office without faults.
struct BackOfficeScenario {
    enum class LoginPage {
        form,
        outsideForm,   ///< the fields and a button are outside any form; a script sends them
        withoutFields, ///< only a text
    };
    LoginPage loginPage = LoginPage::form;
    bool unreachable = false;                 ///< connections end without a response, as when the VPN is down
    std::chrono::milliseconds answerDelay{0}; ///< before every response except to HEAD
    bool neverFinishes = false;               ///< a page stays half sent until this is cleared
    bool noCompanyField = false;              ///< the customer page lacks the field with the company
    bool hangsScript = false;                 ///< an invoice page ends with a script that never returns
    int status = 200;                         ///< HTTP status of invoice pages; any value but 200 shows an error
};

} // namespace parcelory
