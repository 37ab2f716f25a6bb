#pragma once

#include "app/AppState.h"
#include "backoffice/DesklineAuth.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "shell/ErrorLog.h"
#include "support/FakePlatform.h"

namespace parcelory::test {

/// The program over a fake page; only the check whether the back office is reachable uses HTTP.
class BackOfficeDesk : public testing::Test, protected FakePlatform {
protected:
    BackOfficeDesk()
    {
        platform.deployment.backOffice = office.baseUrl();
        errors = std::make_unique<ErrorLog>(platform);
        app = std::make_unique<AppState>(platform);
        settle();
    }

    /// Sets up the page: the results of the probes and of the program's scripts.
    void showPage(bool form, bool signedIn, const QString &scriptResult = QStringLiteral("submitted"))
    {
        web.answer = [=](const QString &expression) -> QVariant {
            if (expression == DesklineAuth::loginFormProbe)
                return form;
            if (expression == DesklineAuth::signedInProbe)
                return signedIn;
            return isReadyProbe(expression) ? QVariant(true) : QVariant(scriptResult);
        };
    }
    static bool isReadyProbe(const QString &expression)
    {
        return expression.startsWith(QStringLiteral("document.readyState"));
    }

    PracticeBackOffice office;
    std::unique_ptr<ErrorLog> errors;
    std::unique_ptr<AppState> app;
};

} // namespace parcelory::test
