#include "app/label/DraftKeeper.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class DraftKeeperTest : public LabelTest {
protected:
    DraftKeeperTest() { open(); }
    ~DraftKeeperTest() override { keeper.reset(); }

    void open()
    {
        keeper.emplace(*app, screen());
        run(keeper->takeStored());
    }
    QByteArray onDisk()
    {
        clock.advance(1s);
        app->drafts.flush();
        return contentsOf(path(u"label_draft.json"_s));
    }
    /// The program is killed and started again: its folder holds the draft that it held before.
    void killWith(const QByteArray &draft)
    {
        endLookups();
        keeper.reset();
        restart([&] { put(path(u"label_draft.json"_s), draft); });
        open();
    }

    std::optional<DraftKeeper> keeper;
};

} // namespace

TEST_F(DraftKeeperTest, StoresTheDraftWithinASecondAndBringsItBack)
{
    EXPECT_EQ(onDisk(), "(none)") << "an empty form is no draft";
    composeParcel(homeAddress());
    const QByteArray first = onDisk();
    EXPECT_THAT(first, HasSubstr("Whitfield"));
    EXPECT_THAT(first, Not(HasSubstr("shippo_")));
    screen().descriptionText = u"Dimes"_s; // no price depends on it
    const QByteArray last = onDisk();
    EXPECT_THAT(last, HasSubstr("Dimes"));
    const SavedDraft draft = screen().saved();

    for (const QByteArray &stored : {last, QByteArray(last).replace("\"version\":\"", "\"version\":\"0.")}) {
        killWith(stored);
        EXPECT_EQ(screen().saved(), draft);
        EXPECT_EQ(banner().contains(u"after the update"_s), stored != last);
    }
    screen().clearDraft();
    screen().clearDraft(); // pressed twice
    EXPECT_THAT(onDisk(), Not(HasSubstr("Whitfield")));
    screen().undo();
    EXPECT_THAT(onDisk(), HasSubstr("Dimes")) << "as before the form was cleared";
    EXPECT_EQ(screen().saved(), draft);
}

TEST_F(DraftKeeperTest, ADraftWithALabelDoesNotComeBack)
{
    composeAndRate(homeAddress());
    const QByteArray pressed = onDisk();
    buyAndMeanwhile([&] {
        screen().descriptionText = u"typed meanwhile"_s;
        EXPECT_EQ(onDisk(), pressed) << "its label may be sold by now";
    });
    ASSERT_EQ(app->log.records().size(), 1);
    EXPECT_THAT(contentsOf(path(u"label_draft.json"_s)), Not(HasSubstr("Whitfield"))) << "before the journal is closed";
    killWith(pressed);
    EXPECT_TRUE(screen().recipient().isEmpty()) << "the log has its label";
    EXPECT_THAT(onDisk(), Not(HasSubstr("Whitfield")));

    composeAndRate(homeOf(u"Ida Penn"_s));
    const QByteArray doubtful = onDisk();
    pressUnheard();
    carrier.setScenario({.dropConnection = true});
    killWith(doubtful);
    EXPECT_TRUE(screen().recipient().isEmpty()) << "the outcome is unknown";
    EXPECT_THAT(onDisk(), HasSubstr("Ida Penn"));
    carrier.setScenario({});
    checkAgain();
    EXPECT_TRUE(screen().recipient().isEmpty()) << "it was bought";
    EXPECT_THAT(onDisk(), Not(HasSubstr("Ida Penn")));
}

TEST_F(DraftKeeperTest, WhatIsTypedForTheRecipientDuringThePurchaseIsNoDraftOfALaterDay)
{
    composeAndRate(homeAddress());
    buyAndMeanwhile([this] { screen().weightOz = u"7"_s; });
    ASSERT_EQ(screen().recipient(), homeAddress()) << "it stays on the screen";
    const QByteArray same = onDisk();
    EXPECT_THAT(same, HasSubstr("Whitfield"));
    app->draftTo = homeOf(u"Ida Penn"_s);
    const QByteArray other = onDisk();
    clock.start = clock.start.addDays(1);
    killWith(same);
    EXPECT_TRUE(screen().recipient().isEmpty()) << "it may be the same parcel";
    killWith(other);
    EXPECT_EQ(screen().recipient().name, u"Ida Penn"_s);
}

TEST_F(DraftKeeperTest, IsNotBroughtBackUncheckedOrOverANewParcel)
{
    composeParcel(homeAddress());
    const QByteArray draft = onDisk();
    keeper.reset();
    put(path(u"label_draft.json"_s), draft);
    composeParcel(londonAddress());
    open();
    EXPECT_EQ(screen().recipient(), londonAddress());

    screen().clearDraft();
    endLookups();
    keeper.reset();
    restart([&] {
        put(path(u"label_draft.json"_s), draft);
        put(path(u"mailing_log.sqlite"_s), "this is no database, and it is long enough to be read as one");
    });
    open();
    EXPECT_TRUE(screen().recipient().isEmpty());
    EXPECT_TRUE(banner().startsWith(u"The last draft was not brought back"_s)) << banner().toStdString();
    EXPECT_THAT(onDisk(), HasSubstr("Whitfield")) << "a later start may read the log";
}

TEST_F(DraftKeeperTest, UndoBringsBackWhatAFillReplaced)
{
    composeParcel(homeAddress());
    screen().reference = u"48213"_s;
    const SavedDraft before = screen().saved();
    const PostalContact other{.name = u"Ida Penn"_s, .street1 = u"1 Elm St"_s, .city = u"Reno"_s, .zip = u"89501"_s};
    for (const bool fromField : {true, false}) {
        app->fillRecipient(other);
        EXPECT_TRUE(app->lastChange.text.value().contains(u"Eleanor Whitfield"_s));
        EXPECT_TRUE(screen().weightLb.value().isEmpty());
        if (fromField)
            EXPECT_TRUE(screen().undo());
        else
            app->lastChange.undo();
        EXPECT_EQ(screen().saved(), before);
        EXPECT_TRUE(app->lastChange.text.value().isEmpty());
        EXPECT_FALSE(screen().undo());
    }
    app->fillRecipient(other);
    screen().clearDraft();
    EXPECT_TRUE(app->lastChange.text.value().isEmpty()) << "it would replace what is typed next";

    composeAndRate(homeAddress());
    pressUnheard();
    app->fillRecipient(other);
    EXPECT_TRUE(app->lastChange.text.value().isEmpty()) << "that label may be bought";
    checkAgain();
}

} // namespace parcelory::test
