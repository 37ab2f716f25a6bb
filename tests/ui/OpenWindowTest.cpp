#include "core/Observable.h"
#include "support/UiTest.h"
#include "support/WindowText.h"
#include "ui/MainWindow.h"
#include "ui/label/RatesPanel.h"
#include "ui/log/ShipmentDetails.h"

#include <QResizeEvent>

#include <typeindex>
#include <unordered_map>

// Whatever changes, an open window shows what a new window over the same models shows. The fields are taken from the
// models themselves, so that a new field is covered as soon as it exists.

namespace parcelory::test {
namespace {

/// Changes a field, and returns what changes it back.
using Change = std::function<std::function<void()>(QUntypedPropertyData *field)>;

template <class T>
std::pair<const std::type_index, Change> changeOf()
{
    return {typeid(T), [](QUntypedPropertyData *field) -> std::function<void()> {
                auto *property = static_cast<QProperty<T> *>(field);
                const T before = property->value();
                property->setValue(other(before));
                return [=] { property->setValue(before); };
            }};
}

template <class... Values>
std::unordered_map<std::type_index, Change> changesOf()
{
    return {changeOf<Values>()..., changeOf<std::optional<Values>>()..., changeOf<QList<Values>>()...};
}

const std::unordered_map<std::type_index, Change> &changes()
{
    static const auto table =
        changesOf<bool, int, double, qint64, QString, QByteArray, QDate, QDateTime, QUuid, AppFlow, MainTab, Carrier,
                  ServiceClass, ServiceOption, PostageMode, UpdatePhase, StatusKind, KeptRecipient, DraftField,
                  MailpieceSelection, Banner, PrinterMessage, UpdateInfo, KeyRow, ShippoRate, ShipmentRecord, LastLabel,
                  DesklineInvoice, ScanForm, MasterEntry, PostalContact, BookChange, ShippoAddress, CustomsInfo,
                  SenderProfile, BoxProfile, UnresolvedPurchase, ResolvedPurchase, RecordCopy, LogChain::Report,
                  LabelSight, RuleBook, RestoreReview, DayReport, AccountState>();
    return table;
}

struct OpenWindowDesk : WindowDesk {
    const SenderProfile away{.name = u"Away"_s, .address = homeAddress()};
    const BoxProfile carton{.name = u"Carton"_s, .length = u"9"_s, .width = u"6"_s, .height = u"2"_s};

    OpenWindowDesk()
    {
        EXPECT_TRUE(app().log.insert(shipment(u"Ruth"_s)) && app().log.insert(shipment(u"Silas"_s)));
        app().senders.profiles = app().senders.profiles.value() + QList{away};
        app().boxes.profiles = QList{carton};
        runUntil([this] { // the program asks the carrier at its start
            settlePool(6);
            return http.underWay == 0 && !label().purchases.checking;
        });
        rest();
    }
    Screens &screens() { return program->screens(); }

    /// Lets everything end that was started and does not wait for the carrier.
    void rest()
    {
        settlePool(6);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        settle();
    }

    /// A rated parcel in the desk's own box, a chosen shipment, and a loaded master log.
    void compose()
    {
        app().tab = MainTab::newLabel;
        app().draftTo = homeAddress();
        LabelScreen &draft = label();
        draft.carrier = Carrier::usps;
        draft.svcClass = ServiceClass::priority;
        draft.service = ServiceOption::tracking;
        draft.mailpiece = carton.id;
        draft.weightLb = u"1"_s;
        draft.validationOK = true;
        draft.faultyField = std::nullopt;
        draft.rates = QList{rate(u"r1"_s, u"9.85"_s), rate(u"r2"_s, u"28.75"_s)};
        draft.selectedRateID = u"r1"_s;
        draft.banner = std::nullopt;
        screens().mailingLog.selected = screens().mailingLog.records().first().id;
        MasterLogScreen &master = screens().masterLog;
        master.entries = QList{MasterEntry{.id = u"m1"_s, .recipient = u"Ruth"_s, .tracking = u"9205"_s}};
        master.selected = u"m1"_s;
        master.loaded = true;
        app().scale.connected = true;
        window().labelView().focusAddressSearch(); // a scan turns the sidebar's page
        for (QWidget *other : QApplication::topLevelWidgets()) {
            if (other->windowTitle() == u"SCAN Form" || other->windowTitle().startsWith(u"Label"))
                other->close();
        }
        rest();
    }

    std::unique_ptr<MainWindow> newWindow()
    {
        auto second = std::make_unique<MainWindow>(app(), screens());
        second->setAttribute(Qt::WA_DontShowOnScreen);
        second->resize(window().size());
        second->show();
        QResizeEvent firstLook(window().labelView().size(), {}); // these may be behind another tab
        for (QWidget *part :
             {static_cast<QWidget *>(&second->labelView()), static_cast<QWidget *>(second->findChild<RatesPanel *>()),
              static_cast<QWidget *>(second->findChild<ShipmentDetails *>())})
            QCoreApplication::sendEvent(part, &firstLook);
        rest();
        return second;
    }
    /// What is different in the new window; empty if nothing is.
    static QString difference(const MainWindow &old, const MainWindow &fresh)
    {
        for (const MainWindow *window : {&old, &fresh}) { // whether a profile is folded is up to the clerk
            for (QAbstractButton *header : window->findChildren<QAbstractButton *>()) {
                if (header->isCheckable() && header->accessibleName().contains(u", "_s) &&
                    dynamic_cast<QFrame *>(header->parentWidget()) && !header->findChildren<QLabel *>().isEmpty())
                    header->setChecked(true);
            }
        }
        QStringList lines = WindowText::of(old), expected = WindowText::of(fresh), text;
        for (const QString &line : expected) {
            if (!lines.removeOne(line))
                text += u"new: "_s + line;
        }
        for (const QString &line : lines)
            text += u"old: "_s + line;
        return text.join(u'\n');
    }

    void checkFieldsOf(const Observable &model)
    {
        if (std::ranges::find(checked, &model) != checked.end())
            return;
        checked.push_back(&model);
        for (const Observable *part : model.parts())
            checkFieldsOf(*part);
        int number = 0;
        for (const Observable::Field &field : model.fields()) {
            const std::string place = std::string(typeid(model).name()) + ", field " + std::to_string(++number);
            SCOPED_TRACE(place);
            const auto change = changes().find(*field.type);
            if (change == changes().end()) {
                ADD_FAILURE() << "no other value of " << field.type->name();
                continue;
            }
            compose();
            const std::function<void()> undo = change->second(field.data);
            rest();
            const std::unique_ptr<MainWindow> second = newWindow();
            EXPECT_EQ(difference(window(), *second), QString());
            undo();
            rest();
            EXPECT_EQ(difference(window(), *second), QString()) << "changed back";
            ++fields;
        }
    }

    std::vector<const Observable *> checked;
    int fields = 0;
};

TEST(OpenWindow, LooksLikeANewOneAfterEveryChange)
{
    OpenWindowDesk desk;
    desk.checkFieldsOf(desk.screens());
    EXPECT_GT(desk.fields, 90);

    desk.compose(); // lists that are no fields
    const std::unique_ptr<MainWindow> second = desk.newWindow();
    EXPECT_TRUE(desk.app().log.setStatus(*desk.screens().mailingLog.selectedRecord(), u"REFUNDED"_s));
    desk.app().log.reload();
    desk.rest();
    EXPECT_EQ(desk.difference(*second, *desk.newWindow()), QString());
    runTask(desk.screens().addressBook.save({.name = u"Ana Ortiz"_s}), &desk.clock);
    desk.rest();
    EXPECT_EQ(desk.difference(*second, *desk.newWindow()), QString());
}

TEST(OpenWindow, AButtonThatWouldDoNothingIsOffAndSaysWhy)
{
    OpenWindowDesk desk;
    desk.compose();
    desk.app().draftTo = londonAddress();
    LastLabel unprinted = other(LastLabel());
    unprinted.isPrinted = false;
    desk.label().last.label = unprinted;
    desk.label().purchases.unresolved = QList{other(UnresolvedPurchase())};
    const auto expect = [&desk](const QString &text, bool on) {
        desk.rest();
        const Button *button = desk.button(text);
        EXPECT_EQ(button->isEnabled(), on) << text.toStdString();
        EXPECT_EQ(button->toolTip().isEmpty(), on) << text.toStdString();
    };
    const QStringList onTheForm = {u"Check again"_s, u"Reprint"_s, u"Print Invoice"_s};
    desk.rest();
    desk.button(u"Reprint"_s)->setFocus();
    for (const bool busy : {true, false}) {
        desk.label().busy = busy;
        for (const QString &text : onTheForm)
            expect(text, !busy);
        EXPECT_EQ(desk.window().focusWidget(), desk.window().findChild<RatesPanel *>()->parentWidget());
    }
    desk.label().purchases.checking = true;
    expect(onTheForm.first(), false);
    desk.app().tab = MainTab::mailingLog;
    expect(u"Reprint"_s, true);
    desk.screens().mailingLog.busy = true;
    expect(u"Reprint"_s, false);
    desk.screens().mailingLog.busy = false;
    desk.label().purchases.checking = false;
}

} // namespace
} // namespace parcelory::test
