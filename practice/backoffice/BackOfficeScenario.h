#pragma once

#include <chrono>

namespace parcelory {

/// What is out of the ordinary at the practice back office. The defaults are a quiet day.
struct BackOfficeScenario {
    enum class LoginPage {
        form,
        outsideForm,   ///< the fields and a button stand outside any form; a script sends them
        withoutFields, ///< nothing but a text
    };
    LoginPage loginPage = LoginPage::form;
    bool unreachable = false;                 ///< connections end without an answer, as while the VPN is down
    std::chrono::milliseconds answerDelay{0}; ///< before every answer but the one to HEAD
    bool neverFinishes = false;               ///< a page that is read stays half until this is over
    bool noCompanyField = false;              ///< the customer page lacks the field with the company
    bool hangsScript = false;                 ///< an invoice page ends with a script that never returns
    int status = 200;                         ///< of invoice pages; with any other value they show an error
};

} // namespace parcelory
