// Makes each operation of each screen fail once: what the clerk reads is in the error log, under the operation's name,
// with an alert only where support can help.

#include "support/AppTest.h"

namespace parcelory::test {
namespace {

/// All screens of a signed-in clerk. Nothing is reachable but the practice carrier.
struct Desk : CarrierDesk {
    ErrorLog errors{platform};
    AppState app{platform};
    Screens screens{app};
    LabelScreen &label = screens.label;
    MailingLogScreen &log = screens.mailingLog;
    AddressBook &book = screens.addressBook;
    std::unique_ptr<PurchaseJournal> other; ///< another program's

    Desk()
    {
        clock.start = QDateTime::currentDateTime(); // the practice carrier uses the real date
        label.shipDate = clock.now().date();
        app.flow = AppFlow::main;
        preferences.setValue(u"printer.zebraQueue"_s, u"ZD421"_s);
        preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
        prompts.answer = 1;
        prompts.file = u"/nowhere/file"_s;
        settle();
    }
    ~Desk() { endRequests(); }
    void finish() { settleBook(book); }
    /// A shipment in the log, bought just now with this desk's test key; the carrier has neither label nor papers.
    ShipmentRecord logged(const QString &status = u"PRINTED"_s)
    {
        ShipmentRecord record = shipmentTo(u"Ana"_s);
        record.createdAt = clock.now();
        record.transactionID = transactionId();
        record.tracking = u"9400"_s;
        record.trackingURL = u"https://usps.example/9400"_s;
        record.labelURL = record.customsDocURL = carrier.baseUrl().toString() + u"none"_s;
        record.isIntl = record.testMode = true;
        record.status = status;
        EXPECT_TRUE(app.log.insert(record));
        settle();
        return log.records().value(0);
    }
    ShipmentRecord printable()
    {
        ShipmentRecord record = logged();
        record.zpl = "^XA^FDx^FS^XZ";
        return record;
    }

    // Before an operation.
    void noBrowser() { desktop.fails = true; }
    void otherProgram() { (other = std::make_unique<PurchaseJournal>(QDir(folder.path())))->open(); }
    void hasLabel() { logged(); }
    void hasScanForm() { screens.scanForm.documents = QList<QByteArray>{"%PDF-1.4\n%%EOF\n"}; }

    // Operations.
    void getRates() { run(label.fetchRates(true)); }
    void buy() { run(label.buyAndPrint()); }
    void makeScanForm() { run(app.createScanForm(deskAddress())); }
    void reprintStored() { run(log.reprint(printable())); }
    void reprintStoredPapers()
    {
        const ShipmentRecord record = logged();
        EXPECT_TRUE(app.log.storeCustomsPDF(record, "%PDF-1.4\n%%EOF\n"));
        run(log.reprintCustoms(record));
    }
    void printFound()
    {
        const ResolvedPurchase found{.recipient = {}, .record = printable(), .text = u"found"_s};
        label.purchases.resolved = QList{found};
        run(label.purchases.print(found));
    }
    void searchTwice()
    {
        for (const QString &text : {u"a"_s, u"b"_s}) {
            log.search = text;
            finish();
        }
    }

    // Where the clerk reads it.
    QString banner() { return label.banner.value() ? label.banner.value()->text : QString(); }
    QString alertText() { return prompts.alerts.isEmpty() ? QString() : prompts.alerts.last().second; }
};

using Step = std::function<void(Desk &desk)>;
using Shown = std::function<QString(Desk &desk)>;

struct Row {
    Step before, fault, operation;
    Shown shown;
    QString context;
    Popup popup = Popup::no;
    QString common = {}; ///< what both texts contain, if the error log tells something else than the screen
};

// Faults.

void none(Desk &) {}

Step scenario(const CarrierScenario &faulty)
{
    return [faulty](Desk &desk) { desk.carrier.setScenario(faulty); };
}
Step answers(const QByteArray &path, int status, const QByteArray &body)
{
    return scenario(answering(path, status, body));
}
Step down(const QByteArray &path)
{
    return answers(path, 500, "down");
}
Step toolFails(const QString &word, int status)
{
    return [=](Desk &desk) {
        desk.processes.behave = [=](const QString &program, const QStringList &arguments) {
            const bool fails = program.endsWith(word) || arguments.contains(word);
            return fails ? ProcessOutcome{status, {}, "on fire"} : ProcessOutcome{};
        };
    };
}
Step damaged(const QByteArray &sql, const QString &file = u"mailing_log.sqlite"_s)
{
    return [=](Desk &desk) { EXPECT_TRUE(Database(desk.path(file)).exec(sql.constData())); };
}
Step full(const QByteArray &table, const QString &file = u"mailing_log.sqlite"_s)
{
    QByteArray sql;
    for (const QByteArray &write : {"INSERT", "UPDATE"})
        sql += "CREATE TRIGGER no" + write + " BEFORE " + write + " ON " + table +
               " BEGIN SELECT RAISE(ABORT, 'full'); END;";
    return damaged(sql, file);
}
// Operations.

Step composed(const ShippoAddress &to, Carrier carrier = Carrier::usps, const QString &signer = u"Dana Marsh"_s)
{
    return [=](Desk &desk) {
        desk.app.draftTo = to;
        desk.label.carrier = carrier;
        for (auto *field : {&desk.label.weightLb, &desk.label.dimLength, &desk.label.dimWidth, &desk.label.dimHeight})
            *field = u"2"_s;
        desk.label.customs = CustomsInfo{CustomsItemType::gold, u"1"_s, u"50"_s, signer};
    };
}
Step rated(const ShippoAddress &to, Carrier carrier = Carrier::usps)
{
    return [=](Desk &desk) {
        composed(to, carrier)(desk);
        desk.getRates();
        desk.clock.advance(LabelScreen::buyPause);
        EXPECT_TRUE(desk.label.selectedRate());
    };
}
Step bought(const ShippoAddress &to)
{
    return [=](Desk &desk) {
        rated(to)(desk);
        desk.buy();
    };
}
/// An operation of a screen without arguments.
template <class Screen>
Step does(Screen Screens::*screen, Task<> (Screen::*operation)())
{
    return [=](Desk &desk) { desk.run((desk.screens.*screen.*operation)()); };
}
/// An operation on a shipment of the mailing log, which is written just before.
Step onLabel(Task<> (MailingLogScreen::*operation)(ShipmentRecord), const QString &status = u"PRINTED"_s)
{
    return [=](Desk &desk) { desk.run((desk.log.*operation)(desk.logged(status))); };
}
Step scan(const QString &code)
{
    return [=](Desk &desk) {
        desk.app.handleInvoiceScan(code);
        runUntil([&] { return !desk.app.scanBusy; }, &desk.clock);
    };
}
/// Every row gets a desk of its own, so that nothing is left of the failure before.
void expectRecorded(const std::vector<Row> &rows)
{
    for (const Row &row : rows) {
        SCOPED_TRACE(row.context.toStdString() + ", row " + std::to_string(&row - rows.data()));
        Desk desk;
        for (const Step &step : {row.before, row.fault, row.operation})
            step(desk);
        desk.finish();
        const QString shown = row.shown(desk);
        ASSERT_EQ(desk.errors.entries().size(), 1) << shown.toStdString() << '\n' << desk.errors.asText().toStdString();
        const QString detail = desk.errors.entries().first().detail.trimmed();
        EXPECT_EQ(desk.errors.entries().first().context, row.context);
        const QString part = row.common.isEmpty() ? detail : row.common;
        EXPECT_TRUE(!part.isEmpty() && shown.contains(part) && detail.contains(part))
            << "shown: " << shown.toStdString() << "\nrecorded: " << detail.toStdString();
        const auto isSupport = [&](const auto &alert) {
            return alert.first.startsWith(u"Bad API response"_s) && alert.second.contains(detail);
        };
        EXPECT_EQ(std::ranges::count_if(desk.prompts.alerts, isSupport), row.popup == Popup::yes ? 1 : 0);
    }
}

const ShippoAddress home = homeAddress(), london = londonAddress();
const QByteArray gone = "ALTER TABLE shipments RENAME TO gone";

} // namespace

TEST(RecordedFailures, OfTheLabelScreen)
{
    const Step validate = does(&Screens::label, &LabelScreen::validate);
    const Step printInvoice = does(&Screens::label, &LabelScreen::printIntlInvoice);
    const Step reprint = [](Desk &desk) { desk.run(desk.label.last.reprint()); };
    const Step noise = [](Desk &desk) { desk.app.scanListener.onNoise(u"0123456789"_s); };
    const Step resume = [](Desk &desk) { desk.run(desk.label.purchases.resume()); };
    const Step zebraFails = toolFails(u"ZD421"_s, 1), laserFails = toolFails(u"Laser"_s, 1);
    const Shown verdict = [](Desk &desk) { return desk.label.validationStatus.value(); };
    const Shown warning = [](Desk &desk) { return desk.label.secondLabel.value(); };
    const Shown lastLabel = [](Desk &desk) { return desk.label.last.label.value()->message; };
    const Shown found = [](Desk &desk) { return desk.label.purchases.resolved.value().first().text; };
    const Shown scanned = [](Desk &desk) { return desk.app.scanStatus.value(); };
    const QByteArray unknown = R"({"validation_results": {"is_valid": false, "messages": [{"text": "Unknown."}]}})";
    const CarrierScenario refused{.purchaseFails = true, .purchaseMessages = {u"Insufficient funds."_s}};
    const QString rates = u"Get Rates"_s, buying = u"Buy Label"_s, printing = u"Print Label"_s;
    const QString invoice = u"Commercial Invoice"_s, fedex = u"FedEx Commercial Invoice"_s;
    expectRecorded({
        {composed(home), down("addresses"), validate, &Desk::banner, u"Validate Address"_s, Popup::yes},
        {composed(home), answers("addresses", 200, unknown), validate, verdict, u"Validate Address"_s},
        {composed(home), down("shipments"), &Desk::getRates, &Desk::banner, rates, Popup::yes},
        {composed(home), scenario({.badToken = u"Token does not exist"_s}), &Desk::getRates, &Desk::banner, rates},
        {composed(home), scenario({.noRates = true}), &Desk::getRates, &Desk::banner, rates},
        {rated(home), damaged(gone), &Desk::buy, warning, buying, Popup::no, u"mailing log "_s},
        {&Desk::otherProgram, rated(home), &Desk::buy, &Desk::banner, buying, Popup::yes},
        {rated(home), scenario(refused), &Desk::buy, &Desk::banner, buying, Popup::yes},
        {rated(home), zebraFails, &Desk::buy, &Desk::banner, printing},
        {rated(home), scenario({.labelAnswer = LabelAnswer::expired}), &Desk::buy, &Desk::banner, printing},
        {rated(home), full("shipments"), &Desk::buy, &Desk::banner, u"Mailing Log"_s, Popup::yes, u"tracking "_s},
        {rated(london), laserFails, &Desk::buy, &Desk::banner, invoice},
        {rated(london, Carrier::fedex), laserFails, &Desk::buy, &Desk::banner, fedex},
        {rated(london, Carrier::fedex), down("documents"), &Desk::buy, &Desk::banner, fedex},
        {composed(london), laserFails, printInvoice, &Desk::banner, invoice},
        {composed(london, Carrier::usps, u"Zo\u0378"_s), none, printInvoice, &Desk::banner, invoice},
        {bought(home), zebraFails, reprint, lastLabel, u"Reprint"_s},
        {none, zebraFails, &Desk::printFound, found, u"Reprint"_s},
        {none, &Desk::otherProgram, resume, &Desk::alertText, u"Purchase Journal"_s},
        {none, none, noise, scanned, u"Scanner"_s},
        {none, none, scan(u"012"_s), scanned, u"Deskline Invoice"_s},
        {none, none, scan(u"48213"_s), scanned, u"Deskline Invoice 48213"_s},
    });
}

TEST(RecordedFailures, OfTheLogsAndScanForms)
{
    using Log = MailingLogScreen;
    const Shown message = [](Desk &desk) { return desk.log.message.value(); };
    const Shown account = [](Desk &desk) { return desk.screens.masterLog.message.value(); };
    const Shown form = [](Desk &desk) { return desk.screens.scanForm.message.value(); };
    const Shown made = [](Desk &desk) { return desk.app.scanFormStatus.value(); };
    const Step track = [](Desk &desk) {
        desk.run(desk.screens.masterLog.trackOnline({.trackingURL = u"https://usps.example/9400"_s}));
    };
    const Step show = [](Desk &desk) { desk.run(desk.screens.scanForm.show({.id = 1})); };
    const QString papers = u"Customs Docs Reprint"_s, scanForm = u"SCAN Form"_s;
    expectRecorded({
        {none, toolFails(u"ZD421"_s, 1), &Desk::reprintStored, message, u"Reprint"_s},
        {none, none, onLabel(&Log::reprint), message, u"Reprint"_s, Popup::yes},
        {none, none, onLabel(&Log::reprintCustoms), message, papers, Popup::yes},
        {none, toolFails(u"Laser"_s, 1), &Desk::reprintStoredPapers, message, papers},
        {none, &Desk::noBrowser, onLabel(&Log::trackOnline), message, u"Track Online"_s},
        {none, down("tracks"), onLabel(&Log::checkStatus), message, u"Check Status"_s, Popup::yes},
        {none, down("refunds"), onLabel(&Log::refund), message, u"Refund"_s, Popup::yes},
        {none, down("transactions"), onLabel(&Log::refund, u"REFUND_PENDING"_s), message, u"Refund"_s, Popup::yes},
        {none, damaged("CREATE TRIGGER a BEFORE UPDATE ON shipments BEGIN SELECT RAISE(ABORT, 'full'); END"),
         onLabel(&Log::refund), message, u"Refund"_s},
        {none, none, does(&Screens::mailingLog, &Log::exportCSV), message, u"Export CSV"_s},
        {none, none, does(&Screens::mailingLog, &Log::importCSV), message, u"Import CSV"_s},
        {&Desk::hasLabel, damaged(gone), &Desk::searchTwice, message, u"Mailing Log"_s},
        {none, down("shipments"), does(&Screens::masterLog, &MasterLogScreen::load), account, u"Master Log"_s},
        {none, none, does(&Screens::masterLog, &MasterLogScreen::exportCSV), account, u"Master Log Export"_s},
        {none, &Desk::noBrowser, track, account, u"Track Online"_s},
        {&Desk::hasLabel, down("carrier_accounts"), &Desk::makeScanForm, made, scanForm},
        {&Desk::hasLabel, answers("manifests", 400, "{}"), &Desk::makeScanForm, made, scanForm},
        {none, damaged(gone), &Desk::makeScanForm, made, scanForm},
        {&Desk::hasScanForm, toolFails(u"Laser"_s, 1), does(&Screens::scanForm, &ScanFormScreen::print), form,
         scanForm},
        {&Desk::hasScanForm, none, does(&Screens::scanForm, &ScanFormScreen::save), form, scanForm},
        {&Desk::hasLabel, damaged("CREATE TABLE scan_forms (x)"), does(&Screens::scanForm, &ScanFormScreen::load), form,
         scanForm},
        {&Desk::hasLabel, damaged("CREATE TABLE scan_forms (x)"), show, form, scanForm},
    });
}

TEST(RecordedFailures, OfTheOtherScreens)
{
    const Shown printers = [](Desk &desk) { return desk.screens.settings.printerMessage.value().text; };
    const Shown status = [](Desk &desk) { return desk.book.status.value(); };
    const Shown login = [](Desk &desk) { return desk.app.loginError.value().value_or(QString()); };
    const Shown update = [](Desk &desk) { return desk.screens.updates.status.value(); };
    const Step save = [](Desk &desk) { EXPECT_FALSE(runTask(desk.book.save({.name = u"Zoe"_s}), &desk.clock)); };
    const Step keep = [](Desk &desk) { emit desk.app.recipientToKeep(home); };
    const Step signIn = [](Desk &desk) {
        desk.app.signOut();
        desk.run(desk.app.signIn(u"dana"_s, u"secret"_s, false));
    };
    const Step feed = [](Desk &desk) { desk.platform.deployment.updateFeed = u"https://updates.example/feed"_s; };
    const Step offer = [](Desk &desk) {
        desk.screens.updates.available = UpdateInfo{u"2"_s, u"https://updates.example/2.zip"_s, {}, {}, {}, {}};
    };
    const Step fullBook = full("addresses", u"addresses.sqlite"_s);
    const QString import = u"Address Book Import"_s;
    expectRecorded({
        {none, toolFails(u"lpstat"_s, 139), does(&Screens::settings, &SettingsScreen::refreshPrinters), printers,
         u"Printers"_s},
        {none, toolFails(u"lpr"_s, 1), does(&Screens::settings, &SettingsScreen::printTest), printers, u"Print Test"_s},
        {none, fullBook, save, status, u"Address Book"_s},
        {none, fullBook, keep, status, u"Address Book"_s},
        {none, none, does(&Screens::addressBook, &AddressBook::importVCard), status, import},
        {none, none, does(&Screens::addressBook, &AddressBook::importEndicia), status, import},
        {none, none, does(&Screens::addressBook, &AddressBook::importContacts), status, import},
        {none, none, signIn, login, u"Sign-In"_s},
        {feed, toolFails(u"curl"_s, 6), does(&Screens::updates, &UpdateChecker::checkNow), &Desk::alertText,
         u"Update Check"_s},
        {none, offer, does(&Screens::updates, &UpdateChecker::install), update, u"Self-Update"_s},
    });
}

} // namespace parcelory::test
