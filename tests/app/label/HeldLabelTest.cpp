#include "app/purchase/KeptLabel.h"
#include "app/purchase/LabelDoubts.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "app/purchase/ReprintCheck.h"
#include "practice/carrier/PracticeLabel.h"
#include "practice/carrier/PracticePdf.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class HeldLabelTest : public LabelTest {
protected:
    ShipmentRecord newestWithLabel()
    {
        ShipmentRecord record = newest();
        record.zpl = **app->log.zpl(record.id);
        return record;
    }
    QString reprinted(const ShipmentRecord &record) { return runTask(reprintChecked(*app, record), &clock); }
    /// Buys a parcel whose label the carrier delivers like this.
    void buyWith(const QByteArray &label)
    {
        composeAndRate(homeAddress());
        carrier.setScenario(answering("labels/", 200, label));
        buy();
    }
    /// The label is logged at once, and comes out only by a reprint that the clerk agrees to.
    void expectHeld(const QByteArray &label, const QString &reason, const QStringList &parts)
    {
        bool isLogged = false;
        prompts.whileAsked = [&] { isLogged = (*app->log.zpl(1)).has_value(); };
        buyWith(label);
        prompts.whileAsked = {};
        ASSERT_EQ(prompts.questions.size(), 1);
        const Question question = prompts.questions[0];
        for (const QString &part : parts)
            EXPECT_TRUE(question.text.contains(part)) << part.toStdString() << '\n' << question.text.toStdString();
        EXPECT_EQ(question.choices.value(question.safeChoice), u"Don't Print"_s);
        EXPECT_TRUE(isLogged) << "the question may stay for an hour";
        EXPECT_TRUE(
            banner().endsWith(u" (print failed: not printed because "_s + reason + u" — use Reprint from the log)"_s))
            << banner().toStdString();
        EXPECT_EQ(*newestWithLabel().zpl, label);
        for (const std::optional<int> answer : {std::optional<int>(), std::optional(1)}) { // the safe choice first
            EXPECT_EQ(processes.lastPrinted(), "");
            prompts.answer = answer;
            run(screen().last.reprint());
        }
        EXPECT_EQ(prompts.questions.size(), 3);
        EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(label));
    }
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
            clock.advance(1min);
            screen().carrier = carrierOfSale;
            screen().customs = CustomsInfo{CustomsItemType::currency, u"12"_s, u"1860.00"_s, {}};
            composeAndRate(to);
            ASSERT_TRUE(isRated()) << banner().toStdString();
            buy();
            EXPECT_TRUE(banner().contains(u"Label sent to ZD421."_s)) << banner().toStdString();
            EXPECT_EQ(reprinted(newestWithLabel()), u"Label sent to ZD421."_s)
                << "also with the one line of the mailing log";
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
                                       .to = sampleAddress("Omaha")});
    expectHeld(label,
               u"6 things on the label differ: name, house number, unit, ZIP, tracking number, tracking number in the "
               "bar code"_s,
               texts(table(u"held-labels"_s, "another parcel's label")));
    EXPECT_EQ(prompts.questions[0].title, u"This Label Doesn't Match the Parcel"_s);
}

TEST_F(HeldLabelTest, ALabelThatChangesThePrinterIsLoggedAndPrintedOnlyOnRequest)
{
    const QByteArray label = "^XA^FDx^FS^JUS^XZ";
    expectHeld(label, u"it contains ^JUS, which can change the printer's settings permanently"_s,
               {u"This label contains ^JUS, which"_s});
    clock.advance(1min);
    buyWith(label); // the clerk agrees
    EXPECT_TRUE(banner().endsWith(u"Label sent to ZD421."_s)) << banner().toStdString();
    EXPECT_EQ(prompts.questions.size(), 4);
}

TEST_F(HeldLabelTest, TheVerdictStaysBesideTheRowAndReprintRepeatsIt)
{
    buyLabel();
    ShipmentRecord row = newest();
    const auto kept = keptLabel(app->log, row);
    ASSERT_TRUE(kept->verdict && kept->bytes);
    EXPECT_EQ(*kept->verdict, (LabelVerdict{screen().last.label.value()->verdict.findings, {}}));
    EXPECT_EQ(LabelVerdictTexts::outcomeOf(kept->verdict), LabelOutcome::same);
    EXPECT_TRUE(app->labelHistory.addReprint(row, clock.now())); // a reason to ask

    prompts.answer = 1;
    EXPECT_EQ(reprinted(row), u"Label sent to ZD421."_s);
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_TRUE(prompts.questions[0].text.contains(u"\nAddress and tracking match the label ✓"_s));
    EXPECT_EQ(prompts.questions[0].pictures.size(), 1) << "the label is seen before it is printed again";

    LabelVerdict different = *kept->verdict; // found with the whole address, of which the row has one line
    different.findings.first().match = LabelMatch::different;
    EXPECT_TRUE(keepVerdict(app->log, row, different));
    EXPECT_EQ(reprinted(row), u"Label sent to ZD421."_s);
    EXPECT_EQ(prompts.questions.last().title, u"This Label Doesn't Match the Parcel"_s);
    prompts.answer = 0;
    EXPECT_EQ(reprinted(row), QString());
    const qint64 id = std::exchange(row.id, 0); // as the last label knows it
    EXPECT_EQ(keptLabel(app->log, row)->verdict, different);
    row.id = id + 1; // as a list has it that is not read again since a restore
    EXPECT_EQ(keptLabel(app->log, row)->verdict, different);
    EXPECT_EQ(keptLabel(app->log, row)->bytes, kept->bytes);
    row.id = id;
    EXPECT_TRUE(
        LabelVerdicts::put(app->log, row, {{u"NAME"_s, u"SAME"_s, {}, {}, {}}, {u"COLOR"_s, u"FADED"_s, {}, {}, {}}}));
    EXPECT_FALSE(keptLabel(app->log, row)->verdict) << "words of a later version do not count as a match";
}

TEST_F(HeldLabelTest, OldRowsAndGraphicLabelsAreComparedAtTheirReprint)
{
    buyLabel();
    ShipmentRecord row = newestWithLabel();
    EXPECT_TRUE(LabelVerdicts::put(app->log, row, {}));
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
    buyLabel();
    const ShipmentRecord bought = newestWithLabel();
    const QByteArray number = bought.tracking.toUtf8(), other = QByteArray(number).replace("17", "71");
    const auto filled = [&](const Json &cell) { return bytes(cell).replace("OTHER", other).replace("NUMBER", number); };
    for (const Json &row : table(u"held-labels"_s, "differences")) {
        const QString sentence = text(row[2]).replace(u"NUMBER"_s, bought.tracking);
        SCOPED_TRACE(sentence.toStdString());
        ShipmentRecord record = bought;
        record.testMode = !text(row[0]).isEmpty();
        if (record.testMode)
            record.zpl->replace(filled(row[0]), filled(row[1]));
        ASSERT_NE(*record.zpl == *bought.zpl, record.testMode);
        ASSERT_TRUE(
            execute(Database(path(u"mailing_log.sqlite"_s)), "UPDATE shipments SET test_mode = ?", record.testMode));
        if (!record.testMode)
            useToken(PracticeCarrier::liveToken);
        prompts.questions.clear();
        EXPECT_EQ(reprinted(record), QString());
        ASSERT_EQ(prompts.questions.size(), 1);
        EXPECT_EQ(prompts.questions[0].title, text(row[3]));
        EXPECT_TRUE(prompts.questions[0].text.startsWith(sentence)) << prompts.questions[0].text.toStdString();
        const QuestionPicture picture = prompts.questions[0].pictures.value(0);
        EXPECT_FALSE(picture.mark.isEmpty());
        EXPECT_EQ(picture.words.size(), row[4].get<qsizetype>());
        constexpr int mostOfLine = 60; // dots
        if (row[5].get<bool>())        // the whole address is marked
            EXPECT_GT(picture.mark.height(), mostOfLine);
        for (const QRect &word : picture.words)
            EXPECT_TRUE(picture.mark.contains(word) && word.left() > picture.mark.center().x()) << "at the line's end";
    }
    EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(*bought.zpl)) << "only the label that was bought came out";
}

TEST_F(HeldLabelTest, ALabelIsSavedAsAPictureInTheRememberedFolder)
{
    buyLabel();
    LabelPreview &preview = screen().last.preview;
    runUntil([&] { return preview.sight.value().picture != nullptr; }, &clock);
    const QTemporaryDir folder;
    for (const auto &[name, kind] :
         {std::pair(u"label.png"_s, LabelKind::png), std::pair(u"label.pdf"_s, LabelKind::pdf)}) {
        prompts.file = folder.filePath(name);
        runTask(preview.save(), &clock);
        EXPECT_EQ(preview.message.value(), u"Saved to "_s + name);
        EXPECT_EQ(labelKind(contentsOf(folder.filePath(name))), kind);
    }
    prompts.file = folder.filePath(u"missing/label.png"_s);
    runTask(preview.save(), &clock);
    EXPECT_EQ(QFileInfo(prompts.fileQuestions.last().second).path(), folder.path());
    EXPECT_FALSE(preview.message.value().isEmpty() || preview.message.value().startsWith(u"Saved"));
}

} // namespace parcelory::test
