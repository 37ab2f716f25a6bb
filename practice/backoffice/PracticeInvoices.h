#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// An invoice of the practice back office, with its texts as the page shows them.
struct PracticeInvoice {
    struct Buyer {
        QString name = {};
        QString email = {};
        QStringList street = {}; ///< one entry per line
        QString city = {};       ///< with the state: "Asheville, NC"
        QString zip = {};
        QString country = {};
        QString phone = {};
        QString company = {};
        QString codes = {};
    };
    struct Item {
        QString title;
        QString quantity;
        QString total;
    };
    struct Note {
        QString text;
        QString by;
        QString date;
    };

    int number = 0;
    QString about = {}; ///< what is special about it
    Buyer shipTo = {};
    std::optional<Buyer> billTo = {}; ///< a second block with the same labels, below the first
    QList<Item> items = {};
    QList<Note> notes = {};
    QString tracking = QStringLiteral("-");
    QString shipping = QStringLiteral("USPS Priority");
    QString shippingCost = QStringLiteral("$9.95");
    QString paid = QStringLiteral("$0.00");
    int customer = 0;             ///< the number of the buyer's customer page; 0 when there is none
    QString customerCompany = {}; ///< as the customer page shows it
    bool hasOnlyAddress = false;  ///< the page shows a name and an address and nothing else
};

/// The invoices of the practice back office: first the ordinary invoices, then the invoices that are hard to read.
QList<PracticeInvoice> practiceInvoices();

} // namespace parcelory
