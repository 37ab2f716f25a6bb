#include "app/preview/LabelPreview.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "compose/LabelReadBack.h"
#include "devices/LabelPicture.h"
#include "practice/carrier/PracticePdf.h"
#include "support/UiTest.h"
#include "ui/LabelWindow.h"
#include "ui/ReviewDialog.h"
#include "ui/preview/FindingList.h"
#include "ui/preview/LabelSheet.h"
#include "ui/preview/LabelThumbnail.h"
#include "ui/preview/PictureButton.h"

#include <QClipboard>

namespace parcelory::test {
namespace {

using State = LabelSight::State;

const QByteArray zpl = "^XA^PW812^LL1218^FO100,100^A0N,60,60^FDRUTH^FS^XZ";

struct LabelPreviewTest : testing::Test, WindowDesk {
    Screens &screens() { return program->screens(); }
    State state(const LabelPreview &preview) { return preview.sight.value().state; }
    void drawn(const LabelPreview &preview)
    {
        wait([&] { return state(preview) != State::drawing && state(preview) != State::nothing; });
    }
    ShipmentRecord record(const QString &name, const std::optional<QByteArray> &label)
    {
        ShipmentRecord record{.service = u"Priority Mail"_s, .recipient = name, .transactionID = u"t-"_s + name};
        record.zpl = label;
        return record;
    }
    QWidget *thumbnailCard() { return window().findChild<LabelThumbnail *>()->parentWidget(); }
    LabelWindow *labelWindow()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *found = qobject_cast<LabelWindow *>(widget); found && found->isVisible())
                return found;
        }
        return nullptr;
    }
};

} // namespace

TEST_F(LabelPreviewTest, TellsWhyThereIsNoPicture)
{
    PdfPage pdf(288, 432);
    LabelPreview preview(app());
    const struct {
        ShipmentRecord record;
        State state;
    } table[] = {{record(u"Ruth"_s, zpl), State::drawn},
                 {record(u"Paper"_s, pdf.document()), State::drawn},
                 {record(u"Old"_s, std::nullopt), State::noCopy},
                 {record(u"Broken"_s, "<html>"), State::undrawable}};
    for (const auto &row : table) {
        preview.show(row.record);
        const State first = state(preview); // on the pool, the work may be done at once
        EXPECT_TRUE(first == State::drawing || first == row.state) << "never the former label";
        EXPECT_EQ(preview.sight.value().picture != nullptr, first == State::drawn);
        drawn(preview);
        EXPECT_EQ(state(preview), row.state) << row.record.recipient.toStdString();
        preview.show(row.record);
        EXPECT_EQ(state(preview), row.state) << "the same label does not flicker";
    }
    preview.show(table[0].record);
    preview.show(table[2].record);
    drawn(preview);
    settleAll();
    EXPECT_EQ(state(preview), State::noCopy) << "a late picture of the label before is dropped";
    preview.show(table[0].record);
    preview.clear();
    wait([] { return workPool().activeThreadCount() == 0; });
    EXPECT_EQ(state(preview), State::nothing);
}

TEST_F(LabelPreviewTest, WordsOfAVerdict)
{
    const LabelFinding name{LabelItem::name, LabelMatch::same, u"Ruth"_s, u"RUTH"_s, {}},
        zip{LabelItem::zip, LabelMatch::different, u"28801"_s, u"28804"_s, {}},
        unit{LabelItem::unit, LabelMatch::different, u"APT 3"_s, {}, {}},
        city{LabelItem::city, LabelMatch::notFound, u"Bend"_s, {}, {}},
        code{LabelItem::trackingCode, LabelMatch::unchecked, u"92"_s, {}, {}},
        mark{LabelItem::mark, LabelMatch::notFound, u"test"_s, {}, {}};
    const std::tuple<QList<LabelFinding>, LabelOutcome, QString> table[] = {
        {{}, LabelOutcome::notCompared, u"Not checked"_s},
        {{name, mark}, LabelOutcome::same, u"Address and tracking match the label ✓"_s},
        {{name, city, zip}, LabelOutcome::different, u"The ZIP differs: 28801 on the parcel, 28804 on the label."_s},
        {{zip, unit}, LabelOutcome::different, u"2 things differ: ZIP, unit."_s},
        {{name, city, code}, LabelOutcome::notFound, u"Not found on the label: city."_s},
        {{name, code}, LabelOutcome::unchecked, u"Cannot be checked: tracking number in the bar code"_s},
        {{code}, LabelOutcome::unchecked, u"Cannot be checked: graphic"_s},
    };
    for (const auto &[findings, outcome, line] : table) {
        const LabelVerdict verdict{.findings = findings, .addressOnLabel = {}};
        EXPECT_EQ(LabelVerdictTexts::outcomeOf(verdict), outcome) << line.toStdString();
        EXPECT_EQ(LabelVerdictTexts::lineOf(verdict), line);
    }
}

TEST_F(LabelPreviewTest, ABoughtLabelIsSeenOnTheCardAndInItsWindow)
{
    const ShippoAddress to = homeAddress();
    app().draftTo = to;
    label().weightLb = u"1"_s;
    label().dimLength = u"9"_s;
    label().dimWidth = u"6"_s;
    label().dimHeight = u"2"_s;
    spawn([this] { return label().fetchRates(true); });
    wait([this] { return label().selectedRate() && !label().busy; });
    clock.advance(LabelScreen::buyPause);
    spawn([this] { return label().buyAndPrint(); });
    wait([this] { return !label().buying && label().last.label.value(); });
    LabelPreview &preview = label().last.preview;
    drawn(preview);
    ASSERT_EQ(state(preview), State::drawn);
    EXPECT_EQ(LabelVerdictTexts::lineOf(preview.sight.value().verdict), u"Address and tracking match the label ✓"_s);

    QWidget *card = thumbnailCard();
    std::optional<LastLabel> abroad = label().last.label;
    abroad->record.isIntl = true;
    abroad->message = u"Customs docs sent to the printer."_s;
    label().last.label = abroad;
    for (const QSize &size : {QSize(1280, 757), window().minimumSize()}) {
        window().resize(size);
        settleAll();
        EXPECT_GE(card->height(), card->heightForWidth(card->width())) << "nothing on it is squeezed";
    }

    auto *thumbnail = named<LabelThumbnail>(u"Label picture, "_s + to.name);
    EXPECT_EQ(thumbnail->accessibleDescription(), u"Address and tracking match the label ✓"_s);
    click(thumbnail);
    LabelWindow *shown = labelWindow();
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->windowTitle(), u"Label — "_s + to.name);
    auto *sheet = shown->findChild<LabelSheet *>();
    EXPECT_TRUE(sheet->isFitted() && sheet->accessibleName().endsWith(u"turned 180 degrees"_s))
        << sheet->accessibleName().toStdString();
    screens().settings.rotate180 = false;
    settleAll();
    EXPECT_FALSE(sheet->accessibleName().contains(u"turned"_s)) << "as the printer is set now";
    sheet->setZoom(100);
    sheet->zoomBy(+1);
    EXPECT_EQ(sheet->percent(), 125);
    sheet->zoomBy(-9);
    EXPECT_EQ(sheet->percent(), LabelSheet::least);
    auto *findings = shown->findChild<FindingList *>();
    EXPECT_EQ(findings->item(0)->data(Qt::AccessibleTextRole).toString(), u"Name, ELEANOR WHITFIELD, same"_s);
    const QImage before = sheet->viewport()->grab().toImage();
    findings->setCurrentRow(0);
    EXPECT_NE(sheet->viewport()->grab().toImage(), before) << "its place is framed";
    button(u"Copy"_s, shown)->click();
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), preview.sight.value().picture->pages.first().image.size());

    app().draftTo = londonAddress(); // the next parcel
    settleAll();
    EXPECT_EQ(shown->windowTitle(), u"Label — "_s + to.name) << "the clerk may still read it";
    app().tab = MainTab::mailingLog;
    ShipmentRecord old = record(u"Ruth Abernathy"_s, std::nullopt);
    EXPECT_TRUE(app().log.insert(old));
    app().log.reload();
    settleAll();
    const auto select = [&](const QString &name) {
        for (const ShipmentRecord &row : app().log.records()) {
            if (row.recipientName() == name)
                screens().mailingLog.selected = row.id;
        }
    };
    select(u"Ruth Abernathy"_s);
    window().activateWindow();
    window().mailingLogView().table()->setFocus();
    QTest::keyClick(window().mailingLogView().table(), Qt::Key_Space);
    drawn(screens().mailingLog.preview);
    settleAll();
    EXPECT_EQ(shown->windowTitle(), u"Label — Ruth Abernathy"_s) << "the window follows the place it was opened from";
    select(to.name);
    drawn(screens().mailingLog.preview);
    settleAll();
    EXPECT_EQ(shown->windowTitle(), u"Label — "_s + to.name);
    QTest::keyClick(findings, Qt::Key_Space);
    settleAll();
    EXPECT_FALSE(labelWindow());
}

TEST_F(LabelPreviewTest, AQuestionShowsEachDifferenceAndLeadsToTheWholeLabel)
{
    QImage part(552, 148, QImage::Format_RGB32);
    part.fill(Qt::white);
    int enlarged = 0;
    const QuestionPicture picture{
        .png = pngOf(part), .name = u"Part of the label: APT 8B"_s, .caption = u"Enlarged:"_s};
    Question question{.title = u"Print?"_s, .text = {}, .choices = {u"Don't Print"_s, u"Print & Go"_s}};
    question.comparison = Comparison{.markedRight = {u"APT 8B"_s}, .same = u"Same on both: name."_s};
    question.pictures = {picture, picture};
    question.pictures[1].name = u"Part of the label: 28804"_s;
    question.enlarge = [&] { ++enlarged; };
    Dialog *dialog = makeQuestion(clock, question, &window());
    dialog->open();
    clock.advance(Dialog::keyGuard);
    EXPECT_EQ(dialog->focusWidget(), button(u"Don't Print"_s, dialog));
    EXPECT_EQ(button(u"Print & Go"_s, dialog)->accessibleName(), u"Print & Go"_s) << "without its & otherwise";
    auto *shown = dialog->findChild<PictureButton *>();
    EXPECT_EQ(shown->caption(), u"Enlarged: (1 of 2)"_s);
    shown->setFocus();
    for (int press = 0; press < 2; ++press)
        QTest::keyClick(shown, Qt::Key_Right);
    EXPECT_EQ(shown->caption(), u"Enlarged: (2 of 2)"_s);
    EXPECT_EQ(shown->accessibleName(), question.pictures[1].name);
    QTest::keyClick(shown, Qt::Key_Space);
    QTest::keyClick(shown, Qt::Key_Return);
    EXPECT_EQ(enlarged, 2);
    EXPECT_TRUE(dialog->isVisible()) << "the question stays open";
    dialog->reject();
}

} // namespace parcelory::test
