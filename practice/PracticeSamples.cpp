#include "practice/PracticeSamples.h"

#include "app/AppState.h"
#include "compose/Weight.h"
#include "core/PostalContact.h"
#include "core/ShippoAddress.h"
#include "records/BoxProfile.h"
#include "records/SenderProfile.h"
#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"

#include <iterator>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct Sample {
    const char16_t *recipient;
    const char16_t *service;
    const char16_t *services;
    const char16_t *tracking;
    double postage;
    double ounces;
    const char16_t *description;
    const char16_t *reference;
    std::optional<LogStatus> status = LogStatus::printed;
    bool testMode = false;
    bool imported = false;
};

constexpr Sample samples[] = {
    {u"Hollis Bergstrom, 12 Cedar St, Salem OR 97301",
     u"Ground Advantage",
     u"USPS Tracking",
     u"9400111899560416770198",
     7.12,
     7.7,
     u"",
     u"48102",
     {},
     false,
     true},
    {u"Test Recipient, 1 Main St, Salem OR 97301", u"Priority Mail", u"USPS Tracking", u"9205590175547700000001", 9.85,
     16, u"", u"test", LogStatus::printed, true},
    {u"Beatrix Lindqvist, 80 Harbor Rd, Portland ME 04101", u"FedEx 2Day", u"Indirect Signature Required",
     u"794643981207", 44.10, 80, u"Albums", u"48117"},
    {u"Silas Okonkwo, 1550 Poplar Ave, Memphis TN 38104", u"Priority Mail", u"USPS Tracking", u"9405511899560416775512",
     9.85, 13.3, u"", u"48120"},
    {u"Odette Marchand, 4 Rue Royale, New Orleans LA 70130", u"Priority Mail", u"Certified Mail",
     u"9407111899560416991763", 12.35, 25, u"", u"48139"},
    {u"Grant Holloway, 77 Peach St, Macon GA 31201", u"Ground Advantage", u"USPS Tracking", u"9400111899560416993208",
     7.12, 6.1, u"Catalog", u"48147", LogStatus::refundError},
    {u"Marisol Vega, 2904 Convent Ave, Laredo TX 78040", u"Priority Mail", u"Signature Confirmation",
     u"9405511899560416995071", 9.85, 16.4, u"Morgan dollars", u"48152"},
    {u"Kenji Yamada, 1-9-1 Marunouchi, Tokyo 100-0005, JP", u"First-Class Package International",
     u"USPS Tracking, Declared $310.00", u"LZ540118995US", 26.75, 9.6, u"Yen notes", u"48160"},
    {u"Joseph P. Caldwell, PO Box 239, Elko NV 89803", u"Priority Mail", u"USPS Tracking", u"9405511899560416998140",
     9.85, 15.1, u"", u"48166", LogStatus::refunded},
    {u"Paul Zielinski, 7 Harbor Ct, Duluth MN 55802", u"Priority Mail Express",
     u"Adult Signature Required, Insurance $2400.00", u"9470111899560417226602", 31.40, 50, u"Silver bars", u"48187"},
    {u"Lucille Fairbanks, 61 Orchard Rd, Keene NH 03431", u"Ground Advantage", u"USPS Tracking",
     u"9400111899560417227034", 7.12, 8.8, u"", u"48190"},
    {u"Ruth Abernathy, 88 Quarry Ln, Bend OR 97702-1188", u"Priority Mail", u"USPS Tracking", u"9405511899560417228890",
     9.85, 12, u"Banknotes", u"48198", LogStatus::refundPending},
    {u"Harriet Ashcombe, 14 Chandos Place, London WC2N 4HS, GB", u"FedEx International Priority",
     u"Direct Signature Required, Declared $1860.00", u"794644128830", 148.22, 38.4, u"Sovereigns", u"48377"},
    {u"Theodore Eng, 2217 W Alder St, Apt 9, Tacoma WA 98405", u"Priority Mail", u"USPS Tracking",
     u"9405511899560417230155", 9.85, 14.2, u"Proof set", u"48209"},
};

/// Name, company, street, unit, city, state, ZIP and country.
constexpr const char16_t *customers[][8] = {
    {u"Amélie Dufresne", u"Dufresne Frères", u"410 Rue Saint-Paul", u"", u"Montréal", u"QC", u"H2Y 1H2", u"CA"},
    {u"Hollis Bergstrom", u"", u"12 Cedar St", u"", u"Salem", u"OR", u"97301", u"US"},
    {u"Kenji Yamada", u"", u"1-9-1 Marunouchi", u"", u"Tokyo", u"", u"100-0005", u"JP"},
    {u"Lucille Fairbanks", u"", u"61 Orchard Rd", u"", u"Keene", u"NH", u"03431", u"US"},
    {u"Marco Bianchi", u"", u"Via Roma 22", u"", u"Milano", u"", u"20121", u"IT"},
    {u"Marisol Vega", u"Vega Hermanos", u"2904 Convent Ave", u"", u"Laredo", u"TX", u"78040", u"US"},
    {u"Paul Zielinski", u"", u"7 Harbor Ct", u"", u"Duluth", u"MN", u"55802", u"US"},
    {u"Ruth Abernathy", u"", u"88 Quarry Ln", u"", u"Bend", u"OR", u"97702", u"US"},
    {u"Silas Okonkwo", u"", u"1550 Poplar Ave", u"", u"Memphis", u"TN", u"38104", u"US"},
    {u"Theodore Eng", u"", u"2217 W Alder St", u"Apt 9", u"Tacoma", u"WA", u"98405", u"US"},
};

/// A transaction id in the carrier's format.
QString sampleId(int number)
{
    return u"5e1c0b7d2f9a4c08b3d6e1f07a92%1"_s.arg(number, 4, 16, QChar(u'0'));
}

} // namespace

ShippoAddress practiceRecipient()
{
    return {.name = u"Eleanor Whitfield"_s,
            .street1 = u"418 Montford Ave"_s,
            .street2 = u"Apt 3B"_s,
            .city = u"Asheville"_s,
            .state = u"NC"_s,
            .zip = u"28801"_s,
            .country = u"US"_s,
            .phone = u"828 555 0142"_s,
            .email = u"e.whitfield@example.com"_s};
}

ShippoAddress practiceBoxHolder()
{
    return {.name = u"Joseph P. Caldwell"_s,
            .street1 = u"PO Box 239 #12"_s,
            .city = u"Elko"_s,
            .state = u"NV"_s,
            .zip = u"89803"_s,
            .country = u"US"_s};
}

ShippoAddress practiceRecipientAbroad()
{
    return {.name = u"Harriet Ashcombe"_s,
            .company = u"Ashcombe & Daughters"_s,
            .street1 = u"14 Chandos Place"_s,
            .street2 = u"Second floor"_s,
            .city = u"London"_s,
            .zip = u"WC2N 4HS"_s,
            .country = u"GB"_s,
            .phone = u"+44 20 7946 0018"_s,
            .email = u"harriet@example.co.uk"_s};
}

void addPracticeShipments(ShipmentLog &log)
{
    QDateTime when(QDate(2026, 11, 18), QTime(13, 9));
    int number = 0;
    for (const Sample &sample : samples) {
        const QString service = QString::fromUtf16(sample.service);
        ShipmentRecord record{.createdAt = when,
                              .carrier = service.startsWith(u"FedEx"_s) ? u"FedEx"_s : u"USPS"_s,
                              .service = service,
                              .postage = sample.postage,
                              .recipient = QString::fromUtf16(sample.recipient),
                              .services = QString::fromUtf16(sample.services),
                              .tracking = QString::fromUtf16(sample.tracking),
                              .weight = weightText(sample.ounces),
                              .weightOz = sample.ounces,
                              .descriptionText = QString::fromUtf16(sample.description),
                              .reference = QString::fromUtf16(sample.reference),
                              .transactionID = sample.imported ? u"Piece 1 of 1"_s : sampleId(++number),
                              .status = sample.status ? wordOf(*sample.status) : QString(),
                              .testMode = sample.testMode};
        const bool isLast = &sample == std::end(samples) - 1;
        if (!log.insert(record, isLast))
            return;
        when = when.addSecs(4 * 3600 + 47 * 60);
    }
}

void addPracticeAddresses(LocalAddressStore &book)
{
    if (!book.rows().isEmpty())
        return;
    QList<PostalContact> contacts = {PostalContact::of(practiceRecipient()),
                                     PostalContact::of(practiceRecipientAbroad())};
    for (const auto &[name, company, street1, street2, city, state, zip, country] : customers) {
        const auto text = [](const char16_t *sample) { return QString::fromUtf16(sample); };
        contacts.append({.name = text(name),
                         .company = text(company),
                         .street1 = text(street1),
                         .street2 = text(street2),
                         .city = text(city),
                         .state = text(state),
                         .zip = text(zip),
                         .country = text(country)});
    }
    book.merge(contacts);
}

void addPracticeProfiles(AppState &app)
{
    QList<SenderProfile> profiles = app.senders.profiles;
    const SenderProfile table{.name = u"Show Table — Long Beach"_s,
                              .address = {.company = u"Corvallon"_s,
                                          .street1 = u"300 E Ocean Blvd"_s,
                                          .street2 = u"Booth 418"_s,
                                          .city = u"Long Beach"_s,
                                          .state = u"CA"_s,
                                          .zip = u"90802"_s,
                                          .country = u"US"_s}};
    const SenderProfile vault{.name = u"Bullion Vault"_s, .address = {.country = u"US"_s}};
    app.senders.profiles = profiles << table << vault;
    app.boxes.profiles =
        QList<BoxProfile>{{.name = u"ULINE S-4344"_s, .length = u"12"_s, .width = u"10"_s, .height = u"8"_s},
                          {.name = u"ULINE S-4122"_s, .length = u"9"_s, .width = u"6"_s, .height = u"4"_s}};
}

} // namespace parcelory
