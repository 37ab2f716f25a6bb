#include "practice/carrier/PracticeTransactions.h"

#include "core/CountryCode.h"
#include "core/IsoDate.h"
#include "core/Json.h"
#include "core/Text.h"
#include "practice/PracticeTime.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeLabel.h"
#include "practice/carrier/PracticeLedger.h"

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QStringList labelFileTypes = {u"PNG"_s,     u"PNG_2.3x7.5"_s, u"PDF"_s,    u"PDF_2.3x7.5"_s, u"PDF_4x6"_s,
                                    u"PDF_4x8"_s, u"PDF_A4"_s,      u"PDF_A5"_s, u"PDF_A6"_s,      u"ZPLII"_s};

Json purchaseErrors(PracticeLedger &ledger, const Json &body)
{
    constexpr int longestMetadata = 100;
    Json errors = Json::object();
    requireText(errors, body, "rate");
    if (!errors.contains("rate") && !ledger.findRate(textOf(body, "rate")).rate)
        complain(errors, "rate", "Rate with supplied object_id " + textOf(body, "rate").toStdString() + " not found.");
    const QString type = textOf(body, "label_file_type");
    if (isUsableText(errors, body, "label_file_type") && !labelFileTypes.contains(type))
        complain(errors, "label_file_type", "\"" + type.toStdString() + "\" is not a valid choice.");
    isUsableFlag(errors, body, "async");
    if (isUsableText(errors, body, "metadata") && textOf(body, "metadata").toUcs4().size() > longestMetadata)
        complain(errors, "metadata", "Ensure this field has no more than 100 characters.");
    return errors;
}

bool goesAbroad(const Json &shipment)
{
    return textOf(shipment.at("address_to"), "country") != textOf(shipment.at("address_from"), "country");
}

Json message(const QString &source, const char *text)
{
    return {{"source", source.toStdString()}, {"code", ""}, {"text", text}};
}

/// Why the carrier refuses this label; empty if it does not.
Json refusals(PracticeLedger &ledger, const QuotedRate &quoted)
{
    constexpr int mostDaysAhead = 7;
    const Json &shipment = *quoted.shipment, &from = shipment.at("address_from"), &to = shipment.at("address_to");
    const QString provider = textOf(*quoted.rate, "provider");
    const bool isUsps = provider == u"USPS";
    const auto shipDate = parseIso(textOf(shipment, "shipment_date"));
    Json messages = Json::array();
    const auto refuseIf = [&](bool applies, const char *text) {
        if (applies)
            messages.push_back(message(provider, text));
    };
    refuseIf(textOf(from, "name").isEmpty(), "Sender name is required.");
    refuseIf(textOf(to, "name").isEmpty(), "Recipient name is required.");
    refuseIf(isUsps && textOf(from, "email").isEmpty() && textOf(from, "phone").isEmpty(),
             "Seller info missing email or phone.");
    refuseIf(isUsps && shipDate > practiceNow().toUTC().addDays(mostDaysAhead),
             "The shipment date must be within 7 days of today.");
    if (goesAbroad(shipment)) {
        PracticeRecord *customs = ledger.customs.find(textOf(shipment, "customs_declaration"));
        refuseIf(!customs, "Customs declaration is required for international shipments.");
        refuseIf(customs && textOf(customs->shown, "eel_pfc").isEmpty(), "customs_declaration.eel_pfc is required.");
    }
    return messages;
}

Json ordered(const CarrierScenario &scenario)
{
    Json messages = Json::array();
    for (const QString &text : scenario.purchaseMessages) {
        Json message = {{"source", "USPS"}, {"code", "failed_address_validation"}};
        if (!text.isEmpty())
            message["text"] = text.toStdString();
        messages.push_back(message);
    }
    return messages;
}

/// A number that cannot be taken for a real number: USPS test numbers contain 1755477.
QString trackingNumber(PracticeLedger &ledger, const QString &provider)
{
    const int number = ++ledger.lastNumber;
    if (provider == u"USPS")
        return u"92108901755477%1"_s.arg(number, 12, 10, QChar(u'0'));
    if (provider == u"FedEx")
        return u"7946%1"_s.arg(number, 8, 10, QChar(u'0'));
    return u"1Z9999990%1"_s.arg(number, 9, 10, QChar(u'0'));
}

QString trackingPage(const QString &provider)
{
    if (provider == u"USPS")
        return u"https://tools.usps.com/go/TrackConfirmAction_input?origTrackNum="_s;
    if (provider == u"FedEx")
        return u"https://www.fedex.com/fedextrack/?trknbr="_s;
    return u"https://www.ups.com/track?tracknum="_s;
}

/// A recipient or sender; the country is only printed abroad.
ShippoAddress printedAddress(const Json &address, bool abroad)
{
    return {.name = textOf(address, "name"),
            .company = textOf(address, "company"),
            .street1 = textOf(address, "street1"),
            .street2 = textOf(address, "street2"),
            .city = textOf(address, "city"),
            .state = textOf(address, "state"),
            .zip = textOf(address, "zip"),
            .country = abroad ? CountryCode::displayName(textOf(address, "country")) : QString()};
}

LabelContent labelContent(const QuotedRate &quoted, const QString &tracking, const QString &metadata, bool isTest)
{
    const Json &shipment = *quoted.shipment;
    const bool abroad = goesAbroad(shipment);
    const Json parcels = shipment.value("parcels", Json::array()), extra = shipment.value("extra", Json::object());
    double ounces = 0;
    for (const Json &parcel : parcels) {
        const bool isPounds = textOf(parcel, "mass_unit") == u"lb";
        ounces += decimalOrZero(textOf(parcel, "weight")) * (isPounds ? 16 : 1);
    }
    return {.provider = textOf(*quoted.rate, "provider"),
            .service = textOf(quoted.rate->at("servicelevel"), "name"),
            .tracking = tracking,
            .reference = metadata,
            .shipDate = textOf(shipment, "shipment_date").left(10),
            .ounces = ounces,
            .needsSignature = extra.is_object() && extra.contains("signature_confirmation"),
            .isTest = isTest,
            .from = printedAddress(shipment.at("address_from"), abroad),
            .to = printedAddress(shipment.at("address_to"), abroad)};
}

std::string publishLabel(PracticeLedger &ledger, const QString &type, const std::string &id,
                         const LabelContent &content)
{
    if (type.startsWith(u"PNG"))
        return ledger.publish("labels/" + id + ".png", "image/png", pngLabel());
    if (type == u"ZPLII")
        return ledger.publish("labels/" + id + ".zpl", "application/octet-stream", zplLabel(content));
    return ledger.publish("labels/" + id + ".pdf", "application/pdf", pdfLabel(content));
}

/// The customs paper that FedEx makes for parcels abroad.
std::string publishInvoice(PracticeLedger &ledger, const std::string &id, const Json &shipment,
                           const LabelContent &content)
{
    const Json &customs = ledger.customs.find(textOf(shipment, "customs_declaration"))->shown;
    QStringList lines = {u"Air waybill "_s + content.tracking, u"Date "_s + content.shipDate, QString(), u"Shipper"_s};
    lines += addressLines(content.from);
    lines += {QString(), u"Consignee"_s};
    lines += addressLines(content.to);
    lines += QString();
    for (const Json &item : customs.at("items"))
        lines += u"%1 x %2, HS %3, value %4 %5"_s.arg(QString::number(item.at("quantity").get<int>()),
                                                      textOf(item, "description"), textOf(item, "tariff_number"),
                                                      textOf(item, "value_amount"), textOf(item, "value_currency"));
    lines += {QString(), u"Certified by "_s + textOf(customs, "certify_signer")};
    return ledger.publish("documents/" + id + ".pdf", "application/pdf", pdfPaper(u"COMMERCIAL INVOICE"_s, lines));
}

Json queuedTransaction(const QuotedRate &quoted, const Json &body, bool test)
{
    Json transaction = newObject(test);
    transaction.update({{"object_state", "VALID"},
                        {"status", "QUEUED"},
                        {"rate", quoted.rate->at("object_id")},
                        {"tracking_number", ""},
                        {"tracking_status", nullptr},
                        {"eta", nullptr},
                        {"tracking_url_provider", ""},
                        {"label_url", ""},
                        {"commercial_invoice_url", nullptr},
                        {"messages", Json::array()},
                        {"order", nullptr},
                        {"metadata", textOf(body, "metadata").toStdString()},
                        {"parcel", quoted.shipment->at("parcels").at(0).at("object_id")},
                        {"billing", {{"payments", Json::array()}}},
                        {"qr_code_url", nullptr},
                        {"created_by", nullptr}});
    return transaction;
}

void finish(Json &transaction, PracticeLedger &ledger, const CarrierScenario &scenario, const QuotedRate &quoted,
            const QString &askedType)
{
    const QString provider = textOf(*quoted.rate, "provider");
    const QString tracking = trackingNumber(ledger, provider);
    const LabelContent content = labelContent(quoted, tracking, textOf(transaction, "metadata"), ledger.test);
    const auto id = transaction.at("object_id").get<std::string>();
    const QString type = scenario.labelFileType.isEmpty() ? askedType : scenario.labelFileType;
    transaction["status"] = "SUCCESS";
    transaction["tracking_number"] = tracking.toStdString();
    transaction["tracking_status"] = "UNKNOWN";
    transaction["tracking_url_provider"] = (trackingPage(provider) + tracking).toStdString();
    if (!scenario.emptyLabelUrl)
        transaction["label_url"] = publishLabel(ledger, type, id, content);
    if (provider == u"FedEx" && goesAbroad(*quoted.shipment))
        transaction["commercial_invoice_url"] = publishInvoice(ledger, id, *quoted.shipment, content);
}

} // namespace

CarrierAnswer createTransaction(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body)
{
    if (const Json errors = purchaseErrors(ledger, body); !errors.empty())
        return jsonAnswer(400, errors);
    const QuotedRate quoted = ledger.findRate(textOf(body, "rate"));
    const Json queued = queuedTransaction(quoted, body, ledger.test);
    Json finished = queued;
    const Json messages = scenario.purchaseFails ? ordered(scenario) : refusals(ledger, quoted);
    if (scenario.purchaseFails || !messages.empty()) {
        finished["status"] = "ERROR";
        finished["messages"] = messages;
    } else {
        finish(finished, ledger, scenario, quoted, textOf(body, "label_file_type"));
    }
    // If async, a client that reads at once finds the purchase still queued.
    const int reads = std::max(scenario.queuedReads, flagOf(body, "async", true) ? 1 : 0);
    if (reads == 0)
        return jsonAnswer(201, ledger.transactions.add(std::move(finished)));
    return jsonAnswer(201, ledger.transactions.add(queued, std::move(finished), reads));
}

CarrierAnswer createRefund(PracticeLedger &ledger, const CarrierScenario &scenario, const Json &body)
{
    const QString id = textOf(body, "transaction");
    PracticeRecord *label = ledger.transactions.find(id);
    Json errors = Json::object();
    requireText(errors, body, "transaction");
    if (errors.empty() && !label)
        complain(errors, "transaction", "Transaction with supplied object_id " + id.toStdString() + " not found.");
    if (!errors.empty())
        return jsonAnswer(400, errors);
    const QString status = textOf(label->shown, "status");
    if (status.startsWith(u"REFUND"))
        return detailAnswer(409, "A refund for this transaction was already requested.");
    if (status != u"SUCCESS")
        return detailAnswer(400, "Only successful transactions can be refunded.");

    const bool isGranted = scenario.refundOutcome == RefundOutcome::granted;
    const bool isDecided = scenario.refundReads == 0 && isGranted;
    Json decided = label->shown;
    decided["status"] = isGranted ? "REFUNDED" : "REFUNDREJECTED";
    Json pending = label->shown;
    pending["status"] = "REFUNDPENDING";
    const char *answered = isDecided ? "SUCCESS" : "PENDING";
    if (scenario.refundOutcome == RefundOutcome::error) {
        answered = "ERROR";
        *label = {decided};
    } else if (isDecided) {
        *label = {decided};
    } else {
        *label = {std::move(pending), std::move(decided), scenario.refundReads};
    }
    Json refund = newObject(ledger.test);
    refund.update({{"status", answered}, {"transaction", id.toStdString()}, {"messages", Json::array()}});
    return jsonAnswer(201, ledger.refunds.add(std::move(refund)));
}

} // namespace parcelory
