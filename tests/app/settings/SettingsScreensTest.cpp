#include "core/Setting.h"
#include "practice/MemorySecrets.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

/// A machine with print queues defined by the test.
struct SettingsScreenTest : testing::Test, FakePlatform {
    QByteArray queues, devices, queueState = "idle";
    ErrorLog errors{platform};
    AppState app{platform};

    SettingsScreenTest()
    {
        processes.behave = [this](const QString &, const QStringList &arguments) -> ProcessOutcome {
            const QString option = arguments.value(0);
            return {0, option == u"-e" ? queues : option == u"-v" ? devices : queueState, {}};
        };
    }
    /// Makes these label printers available, beside the queues "Laser" and "Z1".
    void connectZebras(const QStringList &names)
    {
        queues = "Laser\nZ1\n";
        devices = "device for Laser: ipp://office/laser\n";
        for (const QString &name : names)
            devices += "device for " + name.toUtf8() + ": usb://Zebra/ZD421\n";
    }
    QString saved(const Setting<QString> &setting) { return read(preferences, setting); }
};

/// A key ring that stores nothing while it is locked.
struct LockableSecrets : MemorySecrets {
    bool locked = false, denied = false;
    int reads = 0;
    std::optional<QString> get(const QString &account) override
    {
        ++reads;
        return denied ? std::nullopt : MemorySecrets::get(account);
    }
    void set(const QString &value, const QString &account) override
    {
        if (!locked)
            MemorySecrets::set(value, account);
    }
};

struct KeysScreenTest : testing::Test, FakePlatform {
    LockableSecrets ring;
    Platform world = with({.secrets = &ring});
    ErrorLog errors{world};
    AppState app{world};
    KeysScreen screen{app};

    void addBoth()
    {
        runTask(screen.add(u" Test "_s, u"shippo_test_1\n"_s));
        runTask(screen.add(u"Live"_s, u"shippo_live_1"_s));
        EXPECT_EQ(screen.message, QString());
    }
    QString lastQuestion() { return prompts.questions.last().text; }
};

const QList<KeyRow> both{{u"Test"_s, true, true}, {u"Live"_s, false, false}};

} // namespace

TEST_F(SettingsScreenTest, StoresEveryEditAtOnceAndReadsAMissingSettingAsTheDeploymentsValue)
{
    SettingsScreen screen(app);
    EXPECT_EQ(screen.fallbackEmail, platform.deployment.fallbackEmail);
    EXPECT_EQ(screen.fallbackPhone, platform.deployment.fallbackPhone);
    EXPECT_TRUE(screen.rotate180);
    screen.fallbackEmail = u"desk@example.com"_s;
    screen.fallbackPhone = QString(); // an empty phone is valid, too
    screen.rotate180 = false;
    SettingsScreen next(app);
    EXPECT_EQ(next.fallbackEmail, u"desk@example.com"_s);
    EXPECT_EQ(next.fallbackPhone, QString());
    EXPECT_FALSE(next.rotate180);

    connectZebras({u"Z1"_s});
    write(preferences, settings::documentQueue, u"Gone"_s);
    SettingsScreen printers(app);
    runTask(printers.refreshPrinters());
    printers.showAllPrinters = true;
    EXPECT_EQ(printers.labelPrinterChoices(), (QStringList{u"Laser"_s, u"Z1"_s}));
    printers.zebraQueue = u"Laser"_s;
    printers.showAllPrinters = false;
    EXPECT_EQ(saved(settings::zebraQueue), u"Laser"_s);
    EXPECT_EQ(saved(settings::documentQueue), u"Gone"_s) << "an unavailable choice stays";
    printers.documentQueue = u"Laser"_s;
    EXPECT_EQ(saved(settings::documentQueue), u"Laser"_s);
}

TEST_F(SettingsScreenTest, ChoosesTheFirstZebraQueueOnlyIfTheSavedQueueIsNotAZebra)
{
    for (const Json &row :
         table(u"printers"_s, "chosen label queue")) { // saved, Zebras, chosen, warning, offered, hint
        connectZebras(texts(row[1]));
        write(preferences, settings::zebraQueue, text(row[0]));
        SettingsScreen screen(app);
        EXPECT_EQ(screen.zebraHint(), QString()) << "no hint before the first look";
        runTask(screen.refreshPrinters());
        EXPECT_EQ(screen.zebraQueue, text(row[2]));
        EXPECT_EQ(saved(settings::zebraQueue), text(row[2]));
        const QString lost = u"“%1” was not found among the Zebra printers — "_s.arg(text(row[0]));
        const bool isWell = row[3].is_null();
        EXPECT_EQ(screen.printerMessage,
                  (isWell ? PrinterMessage{} : PrinterMessage{lost + text(row[3]), false, text(row[0])}));
        EXPECT_EQ(screen.labelPrinterChoices(), texts(row[4]));
        EXPECT_EQ(screen.zebraHint(), text(row[5]));
    }
}

TEST_F(SettingsScreenTest, ChangesNothingIfThePrintSystemDoesNotAnswer)
{
    const std::tuple<const char *, std::function<ProcessOutcome()>, bool> rows[] = {
        {"not running", [] { return ProcessOutcome{1, {}, "lpstat: Scheduler is not running.\n"}; }, false},
        {"killed", [] { return ProcessOutcome{137, {}, {}}; }, false},
        {"cannot be started", []() -> ProcessOutcome { throw AppError(u"no such program"_s); }, false},
        {"hangs", []() -> ProcessOutcome { throw ProcessTimedOut(u"no answer"_s); }, false},
        {"no queue", [] { return ProcessOutcome{1, {}, "lpstat: No destinations added.\n"}; }, true},
    };
    const auto usual = processes.behave;
    for (const auto &[name, lpstat, changes] : rows) {
        SCOPED_TRACE(name);
        connectZebras({u"Z1"_s});
        write(preferences, settings::zebraQueue, u"Z1"_s);
        processes.behave = usual;
        SettingsScreen opened(app), screen(app);
        runTask(screen.refreshPrinters());
        // Without a print system, -e lists nothing and still succeeds.
        processes.behave = [&lpstat](const QString &, const QStringList &arguments) {
            return arguments.value(0) == u"-e" ? ProcessOutcome{} : lpstat();
        };
        runTask(opened.refreshPrinters());
        runTask(screen.refreshPrinters());
        settle();
        EXPECT_EQ(saved(settings::zebraQueue), changes ? QString() : u"Z1"_s);
        EXPECT_EQ(screen.labelPrinterChoices(), changes ? QStringList() : QStringList{u"Z1"_s});
        EXPECT_EQ(opened.zebraHint().isEmpty(), !changes);
        EXPECT_FALSE(screen.printerMessage.value().text.isEmpty());
    }
}

TEST_F(SettingsScreenTest, TakesBackAReplacementUntilAnotherQueueIsChosen)
{
    connectZebras({u"Z1"_s});
    SettingsScreen screen(app);
    screen.chooseLabelQueue(u"Laser"_s);
    runTask(screen.refreshPrinters());
    EXPECT_EQ(saved(settings::zebraQueue), u"Z1"_s);
    screen.undoReplacement();
    EXPECT_EQ(saved(settings::zebraQueue), u"Laser"_s);
    EXPECT_EQ(screen.printerMessage, PrinterMessage());

    runTask(screen.refreshPrinters());
    screen.chooseLabelQueue(u"Z1"_s);
    screen.undoReplacement(); // no longer offered
    EXPECT_EQ(saved(settings::zebraQueue), u"Z1"_s);
}

TEST_F(SettingsScreenTest, WatchesTheQueueThatTheTestLabelWentTo)
{
    SettingsScreen screen(app);
    screen.zebraQueue = u"Z1"_s;
    const Task<> test = screen.printTest();
    screen.chooseLabelQueue(u"Z2"_s); // while the print tools run
    runUntil([&] { return test.isReady(); });
    runUntil([&] { return processes.calls().last().arguments.contains(u"-l"_s); }, &clock);
    EXPECT_TRUE(processes.calls().last().arguments.contains(u"Z1"_s));
}

TEST_F(SettingsScreenTest, PrintsATestLabelOrShowsWhyNotWithoutAnAlert)
{
    SettingsScreen screen(app);
    const auto outcome = [&] {
        runTask(screen.printTest());
        return screen.printerMessage.value();
    };
    EXPECT_EQ(outcome(), (PrinterMessage{u"No Zebra printer queue selected in Settings."_s, false}));
    screen.zebraQueue = u"Z1"_s;
    EXPECT_EQ(outcome(), (PrinterMessage{u"Test sent — a small label should print. Nothing? The printer may be paused "
                                         "(System Settings → Printers) or set to EPL language."_s,
                                         true}));
    EXPECT_TRUE(processes.lastPrinted().startsWith("^XA^POI^PW812")) << "turned as labels are";
    queueState = "printer Z1 disabled since Friday";
    EXPECT_THAT(outcome().text.toStdString(), HasSubstr("“Z1” is PAUSED"));
}

TEST_F(SettingsScreenTest, AsksBeforeItDeletesAndNeverDeletesTheLastProfile)
{
    SettingsScreen screen(app);
    const QUuid first = app.senders.profiles.value().first().id;
    prompts.answer = 1;
    runTask(screen.removeProfile(first));
    EXPECT_TRUE(prompts.questions.isEmpty());

    const QUuid second = app.senders.add().id, box = app.boxes.add().id;
    for (const std::optional<int> answer : {std::optional<int>(), std::optional(1)}) { // the safe choice first
        EXPECT_TRUE(app.senders.find(first) && app.boxes.find(box));
        prompts.answer = answer;
        runTask(screen.removeProfile(first));
        app.lastChange.undo();
        EXPECT_EQ(app.senders.profiles.value().first().id, first);
        EXPECT_TRUE(screen.isDefaultProfile(first)) << "as before it was deleted";
        runTask(screen.removeProfile(first));
        runTask(screen.removeBox(box));
    }
    app.lastChange.undo();
    EXPECT_TRUE(app.boxes.find(box));
    app.lastChange.undo();
    EXPECT_FALSE(app.senders.find(first)) << "only the last change is taken back";
    runTask(screen.removeBox(box));
    EXPECT_FALSE(app.boxes.find(box));
    EXPECT_TRUE(screen.isDefaultProfile(second));
    screen.editProfile(first, [](SenderProfile &) { FAIL() << "a removed profile must not be edited"; });
}

TEST_F(KeysScreenTest, ShowsTheModeOfTheNextLabel)
{
    runTask(screen.refresh());
    EXPECT_EQ(screen.mode, PostageMode::none);
    EXPECT_EQ(screen.statusText, u"No Shippo API key — add one in Settings"_s);
    addBoth();
    EXPECT_EQ(screen.mode, PostageMode::test);
    EXPECT_EQ(screen.keys.value(), both);
    runTask(screen.makeActive(u"Live"_s));
    EXPECT_EQ(screen.mode, PostageMode::live);
    EXPECT_EQ(screen.settingsText, u"“Live” active — LIVE key, labels cost real money."_s);
    ring.set(QString(), u"shippo.token.Live"_s); // by another program
    runTask(screen.refresh());
    EXPECT_EQ(screen.mode, PostageMode::none);
    runTask(screen.makeActive(u"unknown"_s));
    EXPECT_EQ(app.keys.activeName(), u"Live"_s);

    world.practice = true;
    KeysScreen practice(app);
    EXPECT_EQ(practice.mode, PostageMode::practice) << "from the first moment";
    runTask(practice.refresh());
    EXPECT_EQ(practice.mode, PostageMode::practice);
    EXPECT_EQ(practice.statusText, u"Practice — nothing is sent, charged or printed"_s);
}

TEST_F(KeysScreenTest, AsksTheSecretStoreOnceAtEachActivationAndNotAgainAfterARefusal)
{
    addBoth();
    const int before = ring.reads;
    runTask(screen.refreshAtActivation());
    EXPECT_EQ(ring.reads, before + 1);
    ring.denied = true;
    runTask(screen.refreshAtActivation());
    EXPECT_EQ(screen.mode, PostageMode::none);
    const int refused = ring.reads;
    runTask(screen.refreshAtActivation());
    EXPECT_EQ(ring.reads, refused);
    ring.denied = false;
    runTask(screen.makeActive(u"Test"_s)); // any operation of Settings reads again
    EXPECT_EQ(screen.mode, PostageMode::test);
    EXPECT_EQ(screen.keys.value(), both);
}

TEST_F(KeysScreenTest, ReportsWhyAKeyIsRejectedAndDoesNotListIt)
{
    addBoth();
    for (const auto &[name, token] : {std::pair{u" "_s, u"shippo_test_1"_s}, {u"Test"_s, u"\n"_s}}) {
        runTask(screen.add(name, token));
        EXPECT_EQ(screen.message, u"A key needs a name and its token."_s);
    }
    ring.locked = true;
    for (const QString &name : {u"New"_s, u"Live"_s}) {
        runTask(screen.add(name, u"shippo_test_2"_s));
        runTask(screen.refresh()); // does not clear the message
        EXPECT_EQ(screen.message, u"The system's secret store did not keep the key — is it unlocked?"_s);
        EXPECT_EQ(screen.keys.value(), both);
    }
    settle();
    EXPECT_EQ(errors.entries().size(), 2); // entries without a name or token are no failure
    EXPECT_EQ(errors.entries().first().context, u"API Keys"_s);
}

TEST_F(KeysScreenTest, TellsIfTheListOfKeysCannotBeStored)
{
    preferences.isWritable = false;
    runTask(screen.add(u"Test"_s, u"shippo_test_1"_s));
    EXPECT_EQ(screen.message, settings::notStored);
    runTask(SettingsScreen(app).checkStorage());
    EXPECT_EQ(prompts.alerts.size(), 0) << "the alert is the error log's";
    settle();
    EXPECT_EQ(errors.entries().size(), 2);
    preferences.isWritable = true;
    runTask(screen.add(u"Live"_s, u"shippo_live_1"_s));
    EXPECT_EQ(screen.message, QString());
}

TEST_F(KeysScreenTest, AsksBeforeItRemovesAndWarnsIfALiveKeyBecomesActive)
{
    addBoth();
    runTask(screen.remove(u"Test"_s)); // the safe choice
    EXPECT_THAT(lastQuestion().toStdString(), HasSubstr("“Live” becomes active — LIVE key"));
    EXPECT_EQ(screen.keys.value(), both);
    prompts.answer = 1;
    runTask(screen.remove(u"Test"_s));
    EXPECT_EQ(screen.mode, PostageMode::live);
    runTask(screen.remove(u"Live"_s));
    app.lastChange.undo();
    EXPECT_EQ(screen.removedName, u"Live"_s) << "only the name comes back: the token is erased";
    EXPECT_THAT(lastQuestion().toStdString(), HasSubstr("no label can be bought"));
    EXPECT_TRUE(screen.keys.value().isEmpty());
}

TEST_F(KeysScreenTest, RunsOverlappingOperationsInTheirOrder)
{
    QList<KeyRow> expected;
    std::vector<Task<>> running;
    for (int number = 1; number <= 20; ++number) {
        expected.append({u"Key %1"_s.arg(number), true, number == 20});
        running.push_back(screen.add(expected.last().name, u"shippo_test_%1"_s.arg(number)));
        running.push_back(screen.makeActive(expected.last().name));
    }
    runUntil([&] { return std::ranges::all_of(running, &Task<>::isReady); });
    EXPECT_EQ(screen.keys.value(), expected);
}

} // namespace parcelory::test
