// Nothing that names a person, a parcel or a key leaves the desk in the support bundle.

#include "app/support/SupportBundle.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

const QStringList names = texts(table(u"support-bundle"_s, "names")),
                  hidden = texts(table(u"support-bundle"_s, "hidden")),
                  elsewhere = texts(table(u"support-bundle"_s, "elsewhere"));

ShippoAddress personAt(qsizetype place)
{
    return {names[place % 3 == 0 ? 0 : 1],
            names[6],
            names[2 + place % 2],
            names[5],
            names[4],
            u"NC"_s,
            u"28801"_s,
            u"US"_s,
            names[8],
            names[7]};
}

struct SupportDesk : testing::Test, CarrierDesk {
    std::unique_ptr<ErrorLog> errors = std::make_unique<ErrorLog>(platform);
    std::unique_ptr<AppState> app;
    std::unique_ptr<Screens> screens;

    void SetUp() override
    {
        preferences.setValue(settings::signInName.key, names[7]);
        preferences.setValue(settings::senderFallbackPhone.key, names[8]);
        preferences.setValue(settings::copiesFolder.key, path(u"copies"_s));
        preferences.setValue(settings::customsSigners.key, QStringList{names[7] + u'=' + names[0]});
        preferences.setValue(settings::zebraQueue.key, hidden[5]);
        processes.behave = [](const QString &, const QStringList &arguments) {
            const QString option = arguments.value(0);
            return ProcessOutcome{0,
                                  option == u"-e"   ? "Tower_Zebra\n"
                                  : option == u"-v" ? "device for Tower_Zebra: usb://Zebra/ZD421\n"
                                                    : "",
                                  {}};
        };
        app = std::make_unique<AppState>(platform);
        screens = std::make_unique<Screens>(*app);
        app->keys.set(hidden[0], names[0] + u" Live"_s);
        app->senders.profiles = QList{SenderProfile{.name = names[0], .address = personAt(0)}};
        app->boxes.profiles = QList{BoxProfile{.name = names[6]}};
        app->draftTo = personAt(1);
        ASSERT_TRUE(app->addressBook.upsert(PostalContact::of(personAt(0))));
        ASSERT_TRUE(app->addressBook.upsert(PostalContact::of(personAt(1))));
        ShipmentRecord label{.recipient = names[1]};
        label.tracking = hidden[1];
        label.reference = hidden[3];
        ASSERT_TRUE(app->log.insert(label));
        app->journal.begin({.askedAt = clock.now(), .rateId = u"rate"_s, .recipient = personAt(2), .record = label});
        DesklineInvoice invoice;
        invoice.buyerName = elsewhere[0];
        app->scannedInvoice = invoice;
        SavedDraft draft;
        draft.recipient.name = elsewhere[1];
        app->drafts.read();
        app->drafts.save(draft, clock.now(), {});
        screens->label.descriptionText = elsewhere[2];
        ASSERT_TRUE(app->log.insert({.recipient = elsewhere[3]}));
        app->replacedRecipient.street1 = elsewhere[4];
        preferences.setValue(settings::customsSigners.key, QStringList{names[7] + u'=' + elsewhere[5]});
        for (const QString &name : elsewhere)
            fail(u"Purchase of "_s + name);
        app->log.reload(u"a search without a result"_s);
        for (const QString &name : names)
            fail(u"The carrier refused the address of %1: HTTP 429, status 404."_s.arg(name));
        for (const QString &secret : hidden)
            fail(u"Label %1 was not found at https://api.example.com/labels?token=%1 by %2"_s.arg(secret, secret));
        fail(u"Somebody Unheard of at 7 Unknownstreet called"_s);
        runTask(screens->addressBook.reload());
        runTask(screens->keys.refresh());
        app->tab = MainTab::mailingLog;
        app->tab = MainTab::newLabel;
    }
    void TearDown() override { settlePool(); }
    void fail(const QString &text)
    {
        errors->record(u"Buy Label"_s, AppError(text), Popup::no);
        settle();
    }
};

} // namespace

TEST_F(SupportDesk, TheBundleTellsWhatFailedAndNothingOfAPersonOrAParcel)
{
    prompts.file = path(u"bundle.zip"_s);
    runTask(screens->support.save());
    ASSERT_EQ(prompts.fileQuestions.size(), 1);
    EXPECT_EQ(prompts.fileQuestions.first().second, u"Parcelory Support 2026-11-20.zip"_s);
    EXPECT_TRUE(prompts.alerts.last().first.contains(u"Saved"_s)) << prompts.alerts.last().second.toStdString();
    QProcess unzip;
    unzip.start(u"unzip"_s, {u"-p"_s, prompts.file});
    ASSERT_TRUE(unzip.waitForFinished(-1));
    const QString text = QString::fromUtf8(unzip.readAllStandardOutput());
    for (const QString &secret :
         names + hidden +
             QStringList{u"Unheard"_s, u"Unknownstreet"_s, u"api.example"_s, u"28801"_s, PracticeCarrier::testToken})
        EXPECT_FALSE(text.contains(secret, Qt::CaseInsensitive)) << secret.toStdString() << '\n' << text.toStdString();
    EXPECT_EQ(text.count(u"Purchase of […]\n"_s), elsewhere.size()) << text.toStdString();
    for (const QString &fact : texts(table(u"support-bundle"_s, "facts")))
        EXPECT_TRUE(text.contains(fact)) << fact.toStdString() << '\n' << text.toStdString();
}

TEST_F(SupportDesk, ABundleThatCannotBeWrittenIsReported)
{
    runTask(screens->support.save());
    EXPECT_TRUE(prompts.alerts.isEmpty()) << "the clerk has canceled";
    prompts.file = path(u"missing/bundle.zip"_s);
    runTask(screens->support.save());
    EXPECT_TRUE(prompts.alerts.last().first.contains(u"Not Saved"_s));
    EXPECT_FALSE(screens->support.saving);
}

} // namespace parcelory::test
