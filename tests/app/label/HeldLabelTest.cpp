#include "app/purchase/KeptLabel.h"
#include "app/purchase/LabelDoubts.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "app/purchase/ReprintCheck.h"
#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include "devices/Zpl.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeLabel.h"
#include "practice/carrier/PracticePdf.h"
#include "records/LabelVerdicts.h"
#include "records/ShipmentRecord.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <chrono>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class HeldLabelTest : public testing::Test, public LabelDesk {
protected:
    ShipmentRecord newest()
    {
        ShipmentRecord record = app->log.records().first();
        record.zpl = **app->log.zpl(record.id);
        return record;
    }
    QString reprinted(const ShipmentRecord &record) { return runTask(reprintChecked(*app, record), &clock); }
};

} // namespace

TEST_F(HeldLabelTest, ALabelThatMatchesItsParcelAsksNothing)
{
    const ShippoAddress box{u"Ruth Abernathy"_s, u"Studio 54"_s, u"PO Box 239"_s,   {}, u"Elko"_s, u"NV"_s,
                            u"89803"_s,          u"US"_s,        u"775 555 0101"_s, {}};
    for (const QString &token : {PracticeCarrier::testToken, PracticeCarrier::liveToken}) {
        useToken(token);
        for (const auto &[carrierOfSale, to] :
             {std::pair{Carrier::usps, homeAddress()}, std::pair{Carrier::fedex, homeAddress()},
              std::pair{Carrier::usps, box}, std::pair{Carrier::fedex, londonAddress()}}) {
            clock.advance(std::chrono::minutes(1));
            screen().carrier = carrierOfSale;
            if (to.country == londonAddress().country)
                screen().customs = CustomsInfo{CustomsItemType::currency, u"12"_s, u"1860.00"_s, {}};
            composeAndRate(to);
            ASSERT_TRUE(screen().selectedRate()) << banner().toStdString();
            buy();
            EXPECT_TRUE(banner().contains(u"Label sent to ZD421."_s)) << banner().toStdString();
            EXPECT_EQ(reprinted(newest()), u"Label sent to ZD421."_s) << "also with the one line of the mailing log";
            EXPECT_TRUE(prompts.questions.isEmpty()) << prompts.questions.value(0).text.toStdString();
            prompts.questions.clear();
        }
    }
}

TEST_F(HeldLabelTest, AnotherParcelsLabelIsLoggedAndPrintedOnlyOnRequest)
{
    const QByteArray label = zplLabel({.provider = u"USPS"_s,
                                       .service = u"Priority Mail"_s,
                                       .tracking = u"92108901755477000000999999"_s,
                                       .reference = {},
                                       .shipDate = u"2026-11-23"_s,
                                       .from = deskAddress(),
                                       .to = {.name = u"Otto Becker"_s,
                                              .company = {},
                                              .street1 = u"5000 S 160th St"_s,
                                              .street2 = {},
                                              .city = u"Omaha"_s,
                                              .state = u"NE"_s,
                                              .zip = u"68105"_s}});
    bool isLogged = false;
    prompts.whileAsked = [&] { isLogged = (*app->log.zpl(1)).has_value(); };
    composeAndRate(homeAddress());
    carrier.setScenario({.failNext = CarrierFailure{"labels/", 200, "application/zpl", label, 1, ""}});
    buy();
    ASSERT_EQ(prompts.questions.size(), 1);
    const Question &question = prompts.questions[0];
    EXPECT_EQ(question.title, u"This Label Doesn't Match the Parcel"_s);
    for (const QString &part : {u"The name differs: Eleanor Whitfield on the parcel, OTTO BECKER on the label."_s,
                                u"The house number differs: 418 on the parcel, 5000 on the label."_s,
                                u"The unit is missing on the label: APT 3B."_s,
                                u"The ZIP differs: 28801 on the parcel, 68105 on the label."_s,
                                u"Your parcel:\nEleanor Whitfield\n418 Montford Ave\nApt 3B\nAsheville NC 28801"_s,
                                u"On the label:\nOTTO BECKER\n5000 S 160TH ST\nOMAHA NE 68105"_s})
        EXPECT_TRUE(question.text.contains(part)) << part.toStdString() << '\n' << question.text.toStdString();
    EXPECT_EQ(question.choices.value(question.safeChoice), u"Don't Print"_s);
    EXPECT_TRUE(isLogged) << "the question may stay for an hour";
    EXPECT_EQ(processes.lastPrinted(), "");
    EXPECT_TRUE(banner().endsWith(u" (print failed: held, because 6 things on the label differ: name, house number, "
                                  "unit, ZIP, tracking number, tracking number in the bar code — use Reprint from the "
                                  "log)"_s))
        << banner().toStdString();
    EXPECT_EQ(*newest().zpl, label);

    prompts.answer = 1;
    run(screen().reprintLast());
    EXPECT_EQ(prompts.questions.size(), 2);
    EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(label));
}

TEST_F(HeldLabelTest, TheVerdictStaysBesideTheRowAndReprintRepeatsIt)
{
    composeAndRate(homeAddress());
    buy();
    ShipmentRecord row = app->log.records().first();
    const auto kept = keptLabel(app->log, row);
    ASSERT_TRUE(kept->verdict && kept->bytes);
    EXPECT_EQ(*kept->verdict, (LabelVerdict{screen().lastLabel.value()->verdict.findings, {}}));
    EXPECT_EQ(LabelVerdictTexts::outcomeOf(kept->verdict), LabelOutcome::same);
    EXPECT_TRUE(app->labelHistory.addReprint(row.id, clock.now())); // a reason to ask

    prompts.answer = 1;
    EXPECT_EQ(reprinted(row), u"Label sent to ZD421."_s);
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_TRUE(prompts.questions[0].text.contains(u"\nAddress and tracking match the label ✓"_s));
    EXPECT_TRUE(prompts.questions[0].picture) << "the label is seen before it is printed again";

    LabelVerdict different = *kept->verdict; // found with the whole address, of which the row has one line
    different.findings.first().match = LabelMatch::different;
    EXPECT_TRUE(keepVerdict(app->log, row, different));
    prompts.answer = 0;
    EXPECT_EQ(reprinted(row), QString());
    row.id = 0; // as the last label knows it
    EXPECT_EQ(keptLabel(app->log, row)->verdict, different);
    EXPECT_TRUE(
        LabelVerdicts::put(app->log, 1, {{u"NAME"_s, u"SAME"_s, {}, {}, {}}, {u"COLOR"_s, u"FADED"_s, {}, {}, {}}}));
    EXPECT_FALSE(keptLabel(app->log, row)->verdict) << "words of a later version do not count as a match";
}

TEST_F(HeldLabelTest, OldRowsAndGraphicLabelsAreComparedAtTheirReprint)
{
    composeAndRate(homeAddress());
    buy();
    ShipmentRecord row = newest();
    EXPECT_TRUE(LabelVerdicts::put(app->log, row.id, {}));
    EXPECT_FALSE(keptLabel(app->log, row)->verdict);
    prompts.answer = 1;
    EXPECT_FALSE(reprinted(row).isEmpty());
    EXPECT_EQ(LabelVerdictTexts::outcomeOf(keptLabel(app->log, row)->verdict), LabelOutcome::same);
    PdfPage pdf(288, 432);
    const LabelDoubts doubts = runTask(doubtsAbout(pdf.document(), recordedParcels(row)), &clock);
    EXPECT_TRUE(doubts.isEmpty());
    EXPECT_EQ(LabelVerdictTexts::lineOf(doubts.verdict), u"Cannot be checked: graphic"_s);
}

TEST_F(HeldLabelTest, AReprintNamesEveryDifference)
{
    composeAndRate(homeAddress());
    buy();
    const ShipmentRecord bought = newest();
    const QByteArray number = bought.tracking.toUtf8(), other = QByteArray(number).replace("17", "71");
    struct Row {
        QByteArray from, to;
        bool isTest;
        QString title, sentence;
    };
    const QString mismatch = u"This Label Doesn't Match the Parcel"_s,
                  tracking = u"Wrong Tracking Number on This Label"_s;
    const Row table[] = {
        {"APT 3B", "APT 8B", true, mismatch, u"The unit differs: APT 3B on the parcel, APT 8B on the label."_s},
        {" APT 3B", "", true, mismatch, u"The unit is missing on the label: APT 3B."_s},
        {"418 MONT", "481 MONT", true, mismatch, u"The house number differs: 418 on the parcel, 481 on the label."_s},
        {"ELEANOR", "GUDRUN", true, mismatch,
         u"The name differs: Eleanor Whitfield on the parcel, GUDRUN WHITFIELD on the label."_s},
        {"NC 28801", "NC 28804", true, mismatch, u"The ZIP differs: 28801 on the parcel, 28804 on the label."_s},
        {">842028801", ">842028804", true, mismatch, u"The ZIP differs: 28801 on the parcel, 28804 on the label."_s},
        {number, other, true, tracking, u"The tracking number in the bar code differs: "_s + bought.tracking},
        {"", "", false, u"This Is a Sample Label"_s,
         u"This label says “SAMPLE — DO NOT MAIL”, but the key is live."_s}};
    for (const Row &row : table) {
        ShipmentRecord record = bought;
        record.zpl = row.from.isEmpty() ? *bought.zpl : QByteArray(*bought.zpl).replace(row.from, row.to);
        record.testMode = row.isTest;
        ASSERT_TRUE(row.from.isEmpty() || *record.zpl != *bought.zpl) << row.from.toStdString();
        prompts.questions.clear();
        EXPECT_EQ(reprinted(record), QString()) << row.from.toStdString();
        ASSERT_EQ(prompts.questions.size(), 1) << row.from.toStdString();
        EXPECT_EQ(prompts.questions[0].title, row.title);
        EXPECT_TRUE(prompts.questions[0].text.startsWith(row.sentence)) << prompts.questions[0].text.toStdString();
        const auto &picture = prompts.questions[0].picture;
        EXPECT_TRUE(picture && !picture->mark.isEmpty()) << row.from.toStdString();
    }
    EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(*bought.zpl)) << "only the label that was bought came out";
}

} // namespace parcelory::test
