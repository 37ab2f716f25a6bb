#pragma once

#include "practice/backoffice/BackOfficeScenario.h"
#include "practice/backoffice/PracticeInvoices.h"

namespace parcelory {

// The pages of the practice back office, as HTML. Texts from outside are escaped.

/// The sign-in page; `isRefused` after a wrong name or password.
QString signInPage(BackOfficeScenario::LoginPage kind, bool isRefused);

QString dashboardPage(const QString &user, const QList<PracticeInvoice> &invoices);
QString invoicePage(const PracticeInvoice &invoice, bool hangsScript);

/// The page where the customer of `invoice` is edited.
QString customerPage(const PracticeInvoice &invoice, bool hasCompanyField);

/// A page with only a sentence, such as an error.
QString messagePage(const QString &sentence);

} // namespace parcelory
