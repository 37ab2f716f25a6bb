// The draft of the New Label screen over a restart into an update.

#include "core/AppBundle.h"
#include "records/DraftStore.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class UpdateRestart : public testing::Test, public CarrierDesk {
protected:
    UpdateRestart() { start(); }
    ~UpdateRestart() override { settlePool(); }
    /// Starts the program, or starts it again.
    void start()
    {
        settle();
        screens.reset();
        app.reset();
        errors.reset();
        errors = std::make_unique<ErrorLog>(platform);
        app = std::make_unique<AppState>(platform);
        screens = std::make_unique<Screens>(*app);
        runTask(screens->draft.takeStored());
    }
    /// What a finished download leaves.
    void stage()
    {
        const QString staged = path(u"kxupdate-1/Parcelory.app/"_s + programInBundle);
        QDir().mkpath(QFileInfo(staged).path());
        for (const QString &name : {staged, path(u"kxupdate-1/swap.sh"_s)}) {
            QFile file(name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        screens->updates.stagedHelper = path(u"kxupdate-1/swap.sh"_s);
        screens->updates.stagedArgs = {u"1"_s, u"installed"_s, path(u"kxupdate-1/Parcelory.app"_s)};
        screens->updates.phase = UpdatePhase::ready;
    }
    void restart()
    {
        stage();
        runTask(screens->restartIntoUpdate(), &clock);
    }
    LabelScreen &label() { return screens->label; }

    std::unique_ptr<ErrorLog> errors;
    std::unique_ptr<AppState> app;
    std::unique_ptr<Screens> screens;
};

} // namespace

TEST_F(UpdateRestart, BringsTheDraftBack)
{
    const BoxProfile carton{.name = u"Carton"_s, .length = u"9"_s, .width = u"6"_s, .height = u"2"_s};
    app->boxes.profiles = QList{carton};
    const MailpieceSelection mailpieces[] = {PresetMailpiece{presetBoxes().first().id}, carton.id,
                                             BuiltinMailpiece::fedexEnvelope};
    for (const MailpieceSelection &mailpiece : mailpieces) {
        label().carrier = Carrier::fedex;
        app->draftTo = londonAddress();
        label().mailpiece = mailpiece;
        label().senderID = app->senders.add().id;
        label().svcClass = ServiceClass::fedexIntlEconomy;
        label().service = ServiceOption::fedexDirect;
        label().weightLb = u"1 "_s;
        label().weightOz = u"2.5"_s;
        label().dimLength = u"10"_s; // another size than the box's
        label().dimWidth = u"7"_s;
        label().dimHeight = u"3"_s;
        label().insuranceValue = u"500"_s;
        label().shipDate = clock.now().date().addDays(2);
        label().fedexResidential = true;
        label().customs = CustomsInfo{CustomsItemType::silver, u"3"_s, u"80"_s, u"Ana Ortiz"_s};
        label().printInvoiceWithRates = false;
        label().descriptionText = u"Dimes"_s;
        label().reference = u"48213"_s;
        label().keepRecipient = false;
        label().validationOK = true;
        app->scannedInvoice = DesklineInvoice{.invoiceID = u"48213"_s, .tracking = u"9405"_s};
        const SavedDraft draft = label().saved();
        restart();
        EXPECT_EQ(application.started.size(), 1);
        EXPECT_THAT(contentsOf(path(u"label_draft.json"_s)), HasSubstr("Ana Ortiz")) << "before the program ends";
        application.started.clear();
        start();
        EXPECT_EQ(label().saved(), draft);
        EXPECT_EQ(label().invoiceTracking(), u"9405"_s) << "the invoice has a label";
        EXPECT_EQ(label().mailpiece.value(), mailpiece);
        EXPECT_EQ(label().customs.value().signer, u"Ana Ortiz"_s);
        EXPECT_FALSE(label().validationOK) << "the carrier checks the address again";
        EXPECT_TRUE(label().banner.value()->text.startsWith(u"The draft is back"_s));
        label().clearDraft();
    }
}

TEST_F(UpdateRestart, DropsWhatNoLongerHolds)
{
    const BoxProfile carton{.name = u"Carton"_s, .length = u"9"_s, .width = u"6"_s, .height = u"2"_s};
    app->boxes.profiles = QList{carton};
    app->draftTo = homeAddress();
    label().mailpiece = carton.id;
    SavedDraft draft = label().saved();
    draft.shipDate = u"2020-01-31"_s;
    draft.service = u"carrier pigeon"_s;
    app->boxes.profiles = QList<BoxProfile>();
    label().clearDraft();
    label().restore(draft);
    EXPECT_EQ(label().recipient(), homeAddress());
    EXPECT_EQ(label().shipDate.value(), clock.now().date());
    EXPECT_EQ(label().mailpiece.value(), MailpieceSelection(BuiltinMailpiece::package));
    EXPECT_EQ(label().dimLength.value(), u"9"_s);
    EXPECT_EQ(label().service.value(), ServiceOption::tracking);
}

TEST_F(UpdateRestart, IsCalledOffOrHeldUpWhileTheRecordsAreCopied)
{
    ASSERT_TRUE(QFile(path(u"blocked"_s)).open(QIODevice::WriteOnly));
    app->copies.setFolder(QDir(path(u"blocked"_s)));
    prompts.answer = 0; // goes on without a copy
    for (const auto &meanwhile : std::initializer_list<std::function<void()>>{[this] { screens->callOffRestart(); },
                                                                              [this] { app->scanFormBusy = true; }}) {
        prompts.whileAsked = meanwhile;
        restart();
        EXPECT_EQ(prompts.questions.last().title, u"Records Not Copied"_s);
        EXPECT_TRUE(application.started.isEmpty() && application.ends.isEmpty());
        EXPECT_FALSE(screens->restarting || screens->updates.isRelaunching());
        EXPECT_EQ(screens->updates.phase, UpdatePhase::ready) << "another press may follow";
    }
    app->scanFormBusy = false;
    prompts.whileAsked = {};
    restart();
    EXPECT_EQ(application.started.size(), 1);
}

TEST_F(UpdateRestart, AFailedRestartIsReported)
{
    app->draftTo = homeAddress();
    application.fails = true;
    restart();
    EXPECT_TRUE(screens->updates.status.value().startsWith(u"Couldn't start the update helper"_s));
}

} // namespace parcelory::test
