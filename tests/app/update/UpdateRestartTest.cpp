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
    /// Restarts into what a finished download leaves.
    void restart()
    {
        const QString staged = path(u"kxupdate-1/Parcelory.app/"_s + programInBundle);
        QDir().mkpath(QFileInfo(staged).path());
        for (const QString &name : {staged, path(u"kxupdate-1/swap.sh"_s)}) {
            put(name, {});
            QFile::setPermissions(name, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        screens->updates.stagedHelper = path(u"kxupdate-1/swap.sh"_s);
        screens->updates.stagedArgs = {u"1"_s, u"installed"_s, path(u"kxupdate-1/Parcelory.app"_s)};
        screens->updates.phase = UpdatePhase::ready;
        runTask(screens->restartIntoUpdate(), &clock);
    }
    LabelScreen &label() { return screens->label; }

    std::unique_ptr<ErrorLog> errors;
    std::unique_ptr<AppState> app;
    std::unique_ptr<Screens> screens;
};

const BoxProfile carton{.name = u"Carton"_s, .length = u"9"_s, .width = u"6"_s, .height = u"2"_s};

} // namespace

TEST_F(UpdateRestart, BringsTheDraftBack)
{
    app->boxes.profiles = QList{carton};
    const QString shipDate = clock.now().date().addDays(2).toString(Qt::ISODate);
    const auto sample =
        changed(SavedDraft{.recipient = londonAddress(), .shipDate = shipDate}, table(u"updates"_s, "draft")[0]);
    using Id = std::optional<QString>;
    const std::tuple<Id, std::optional<QUuid>, Id> mailpieces[] = {
        {presetBoxes().first().id, {}, {}},
        {{}, carton.id, {}},
        {{}, {}, builtinMailpieceInfo(BuiltinMailpiece::fedexEnvelope).id},
    };
    for (const auto &[preset, box, builtin] : mailpieces) {
        SavedDraft draft = sample;
        std::tie(draft.presetMailpiece, draft.box, draft.builtinMailpiece) = std::tie(preset, box, builtin);
        draft.senderID = app->senders.add().id;
        label().restore(draft);
        label().validationOK = true;
        draft.invoiceTracking = u"9405"_s;
        app->scannedInvoice = DesklineInvoice{.invoiceID = draft.reference, .tracking = *draft.invoiceTracking};
        restart();
        EXPECT_EQ(application.started.size(), 1);
        EXPECT_THAT(contentsOf(path(u"label_draft.json"_s)), HasSubstr("Ana Ortiz")) << "before the program ends";
        application.started.clear();
        start();
        EXPECT_EQ(label().saved(), draft);
        EXPECT_FALSE(label().validationOK) << "the carrier checks the address again";
        EXPECT_TRUE(label().banner.value()->text.startsWith(u"The draft is back"_s));
        label().clearDraft();
    }
}

TEST_F(UpdateRestart, DropsWhatNoLongerHolds)
{
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
    for (const auto &meanwhile : std::initializer_list<std::function<void()>>{
             [this] { screens->callOffRestart(); },
             [this] { app->scanFormBusy = true; },
             [this] { screens->scanForm.busy = true; }, // it may be printing
             [this] { screens->endOfDay.busy = true; },
         }) {
        prompts.whileAsked = meanwhile;
        restart();
        for (Observed<bool> *busy : {&app->scanFormBusy, &screens->scanForm.busy, &screens->endOfDay.busy})
            *busy = false;
        EXPECT_EQ(prompts.questions.last().title, u"Records Not Copied"_s);
        EXPECT_TRUE(application.started.isEmpty() && application.ends.isEmpty());
        EXPECT_FALSE(screens->restarting || screens->updates.isRelaunching());
        EXPECT_EQ(screens->updates.phase, UpdatePhase::ready) << "another press may follow";
    }
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
