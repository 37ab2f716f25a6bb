// Texts from outside (customers, carriers, other programs) are shown as they are, even if they look like markup: a
// picture in a customer's name must not be fetched, and a tag must not hide a word.

#include "core/Observable.h"
#include "support/UiTest.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

namespace parcelory::test {
namespace {

const QString tag = u"<img src=x>"_s;
const QString name = u"<b>Ana</b> "_s + tag;
const QString longName = name + u" Ortiz-Whitfield of the very long street"_s.repeated(20);

bool isMarkup(const QString &text)
{
    return text.contains(tag) && Qt::mightBeRichText(text);
}

struct PlainTextDesk : WindowDesk {
    int shown = 0; ///< places where a text from outside was seen

    /// Every field that is a text holds `text`.
    void fillTexts(const Observable &model, const QString &text)
    {
        if (std::ranges::find(m_filled, &model) != m_filled.end())
            return;
        m_filled.push_back(&model);
        for (const Observable *part : model.parts())
            fillTexts(*part, text);
        for (const Observable::Field &field : model.fields()) {
            if (*field.type == typeid(QString))
                static_cast<QProperty<QString> *>(field.data)->setValue(text);
            else if (*field.type == typeid(std::optional<QString>))
                static_cast<QProperty<std::optional<QString>> *>(field.data)->setValue(text);
        }
    }
    void fillRecords()
    {
        const ShippoAddress address{name, name, name, name, name, u"OR"_s, u"97301"_s, u"US"_s, name, name};
        ShipmentRecord record = shipment(name);
        for (QString *text : {&record.service, &record.services, &record.tracking, &record.descriptionText,
                              &record.reference, &record.status, &record.email})
            *text = name;
        EXPECT_TRUE(app().log.insert(record));
        app().senders.profiles = QList{SenderProfile{.name = name, .address = address}};
        app().boxes.profiles = QList{BoxProfile{.name = name}};
        runTask(program->screens().addressBook.save({.name = longName, .company = name, .street1 = name}), &clock);
        app().draftTo = address;
        app().scannedInvoice = DesklineInvoice{.invoiceID = name,
                                               .buyerName = name,
                                               .address = address,
                                               .items = {{.title = name, .qty = name, .total = name}},
                                               .shipMethod = name,
                                               .tracking = name,
                                               .notes = {{.text = name, .by = name, .date = name}}};
        settleAll();
        ShippoRate offered = rate(u"r1"_s, u"9.85"_s);
        offered.provider = name;
        offered.servicelevel.name = name;
        label().rates = QList{offered};
        label().selectedRateID = u"r1"_s;
        label().banner = Banner{longName, false};
        label().last.label = LastLabel{name, record, name};
        label().purchases.unresolved = QList{UnresolvedPurchase{
            .purchase = {.id = 7, .keyName = u"gone"_s, .recipient = address, .record = record}, .text = name}};
        label().purchases.resolved = QList{ResolvedPurchase{.recipient = address, .record = record, .text = name}};
        Screens &screens = program->screens();
        screens.keys.keys = QList{KeyRow{longName, false, true}};
        screens.settings.printerMessage = PrinterMessage{name, false};
        screens.masterLog.entries = QList{MasterEntry{.id = u"m"_s,
                                                      .recipient = name,
                                                      .company = name,
                                                      .place = name,
                                                      .service = name,
                                                      .tracking = name,
                                                      .status = name}};
        app().errors.record(name, AppError(name), Popup::no);
    }
    void open(const QString &entry)
    {
        for (QAction *action : window().menuBar()->findChildren<QAction *>()) {
            if (action->text() == entry)
                action->trigger();
        }
        settleAll();
    }
    void check(const QWidget &widget)
    {
        SCOPED_TRACE(widget.metaObject()->className() + (u" "_s + widget.accessibleName().left(60)).toStdString());
        for (const QString &text : {widget.toolTip(), widget.whatsThis(), widget.statusTip()})
            EXPECT_FALSE(isMarkup(text));
        shown += widget.toolTip().contains(tag.toHtmlEscaped());
        if (const auto *label = qobject_cast<const QLabel *>(&widget)) {
            EXPECT_TRUE(label->textFormat() == Qt::PlainText || !label->text().contains(tag))
                << label->text().toStdString();
            shown += label->text().contains(tag);
        }
        if (const auto *view = qobject_cast<const QAbstractItemView *>(&widget); view && view->model())
            checkRows(*view);
    }
    void checkRows(const QAbstractItemView &view)
    {
        for (int column = 0; view.model()->rowCount() > 0 && column < view.model()->columnCount(); ++column) {
            const QModelIndex index = view.model()->index(0, column);
            EXPECT_FALSE(isMarkup(index.data(Qt::ToolTipRole).toString()));
            const QPoint place = view.visualRect(index).center();
            QHelpEvent asked(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
            QCoreApplication::sendEvent(view.viewport(), &asked);
            EXPECT_FALSE(isMarkup(QToolTip::text()));
            shown += QToolTip::text().contains(tag.toHtmlEscaped());
            for (QWidget *window : QApplication::topLevelWidgets()) { // it would stay for a moment
                if (window->inherits("QTipLabel"))
                    delete window;
            }
        }
    }
    void checkAll()
    {
        settleAll();
        for (const QWidget *widget : QApplication::allWidgets())
            check(*widget);
    }

private:
    std::vector<const Observable *> m_filled;
};

TEST(PlainText, NoTextFromOutsideIsShownAsMarkup)
{
    PlainTextDesk desk;
    desk.fillTexts(desk.program->screens(), longName);
    desk.checkAll();
    desk.fillRecords();
    desk.open(u"Error Log"_s);
    desk.open(u"Address Book"_s);
    desk.open(u"End of Day"_s);
    for (const MainTab tab : {MainTab::newLabel, MainTab::mailingLog, MainTab::masterLog, MainTab::settings}) {
        desk.app().tab = tab;
        desk.checkAll();
    }
    EXPECT_GT(desk.shown, 100);

    const Comparison comparison{.lead = name,
                                .leftTitle = name,
                                .left = name,
                                .rightTitle = name,
                                .right = name,
                                .marked = {u"Ana"_s},
                                .closing = name};
    const Question questions[] = {{.title = name, .text = name, .choices = {name, u"OK"_s}},
                                  {.title = name, .text = name, .choices = {u"OK"_s}, .comparison = comparison}};
    for (const Question &question : questions) {
        const Task<int> asking = desk.windowPrompts.choose(question);
        QWidget *dialog = desk.dialog();
        desk.shown = 0;
        desk.checkAll();
        EXPECT_GT(desk.shown, 1);
        dialog->close();
        desk.settleAll();
    }
    UpdateInfo update{.version = name, .url = {}, .notes = name};
    desk.program->screens().updates.available = update;
    desk.program->screens().updates.offers = 1;
    desk.dialog();
    desk.shown = 0;
    desk.checkAll();
    EXPECT_GT(desk.shown, 0);
    QApplication::activeModalWidget()->close();
    desk.settleAll();
}

} // namespace
} // namespace parcelory::test
