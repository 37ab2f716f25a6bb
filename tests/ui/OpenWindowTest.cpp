#include "core/Observable.h"
#include "support/WindowDesk.h"
#include "support/WindowText.h"
#include "ui/MainWindow.h"

#include "app/AppState.h"
#include "app/Screens.h"

#include <gmock/gmock.h>

#include <QResizeEvent>

#include <algorithm>
#include <functional>
#include <typeindex>
#include <unordered_map>

// Whatever changes, an open window shows what a new window over the same models shows. The fields are taken from the
// models themselves, so that a new field is covered as soon as it exists.

namespace parcelory::test {
namespace {
using namespace Qt::StringLiterals;

ShippoRate rate(const QString &id, const QString &amount)
{
    return {.objectId = id,
            .amount = amount,
            .currency = u"USD"_s,
            .provider = u"USPS"_s,
            .servicelevel = {u"Priority Mail"_s, u"usps_priority"_s},
            .estimatedDays = 2,
            .durationTerms = {},
            .attributes = {}};
}

ShipmentRecord shipment(const QString &name)
{
    return {.createdAt = QDateTime(QDate(2026, 11, 20), QTime(12, 0)),
            .carrier = u"USPS"_s,
            .service = u"Priority Mail"_s,
            .postage = 9.85,
            .recipient = name + u", 88 Quarry Ln, Bend OR 97702"_s,
            .tracking = u"92055901755477"_s,
            .trackingURL = u"https://example.com/92055901755477"_s,
            .transactionID = u"t-"_s + name,
            .testMode = true};
}

// Another value than the given one, and one that makes a difference on the screen.

bool other(bool value)
{
    return !value;
}
int other(int value)
{
    return value + 1;
}
double other(double value)
{
    return value + 0.25;
}
qint64 other(qint64 value)
{
    return value + 1;
}
QString other(const QString &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    return isNumber ? QString::number(number + 1) : value + u" else"_s;
}
QByteArray other(const QByteArray &value)
{
    return value + "%PDF";
}
QDate other(QDate value)
{
    return value.addDays(1);
}
QUuid other(const QUuid &)
{
    return QUuid::createUuid();
}
AppFlow other(AppFlow)
{
    return AppFlow::login;
}
MainTab other(MainTab)
{
    return MainTab::mailingLog;
}
Carrier other(Carrier)
{
    return Carrier::fedex;
}
ServiceClass other(ServiceClass)
{
    return ServiceClass::express;
}
ServiceOption other(ServiceOption)
{
    return ServiceOption::signature;
}
PostageMode other(PostageMode)
{
    return PostageMode::none;
}
UpdatePhase other(UpdatePhase)
{
    return UpdatePhase::downloading;
}
DraftField other(DraftField)
{
    return DraftField::weight;
}
MailpieceSelection other(const MailpieceSelection &)
{
    return BuiltinMailpiece::mediumFlatRateBox;
}
Banner other(const Banner &)
{
    return {u"Something went wrong."_s, false};
}
PrinterMessage other(const PrinterMessage &)
{
    return {u"The printer is off."_s, false};
}
UpdateInfo other(const UpdateInfo &)
{
    return {.version = u"9.9"_s, .url = {}, .notes = {}};
}
KeyRow other(const KeyRow &)
{
    return {u"Another key"_s, false, false};
}
ShippoRate other(const ShippoRate &)
{
    return rate(u"r3"_s, u"30.00"_s);
}
ShipmentRecord other(const ShipmentRecord &)
{
    return shipment(u"Else"_s);
}
LastLabel other(const LastLabel &)
{
    return {u"Ana Ortiz · Bend OR"_s, shipment(u"Ana Ortiz"_s), {}};
}
DesklineInvoice other(const DesklineInvoice &)
{
    return {.invoiceID = u"48213"_s, .buyerName = u"Ana Ortiz"_s};
}
ScanForm other(const ScanForm &)
{
    return {.id = 7, .askedAt = QDateTime(QDate(2026, 11, 20), QTime(12, 0))};
}
MasterEntry other(const MasterEntry &)
{
    return {.id = u"m9"_s, .recipient = u"Ana Ortiz"_s};
}
PostalContact other(const PostalContact &)
{
    return {.name = u"Ana Ortiz"_s};
}
ShippoAddress other(const ShippoAddress &)
{
    return londonAddress();
}
CustomsInfo other(const CustomsInfo &)
{
    return {CustomsItemType::silver, u"2"_s, u"80"_s, u"Ana Ortiz"_s};
}
SenderProfile other(SenderProfile value)
{
    value.name += u" else"_s;
    value.address = {};
    return value;
}
BoxProfile other(BoxProfile value)
{
    value.name += u" else"_s;
    return value;
}
/// Bought for the recipient of the draft, with a key that is gone: nothing is sent to the carrier.
UnresolvedPurchase other(const UnresolvedPurchase &)
{
    return {.purchase = {.id = 7,
                         .rateId = u"r0"_s,
                         .keyName = u"gone"_s,
                         .recipient = homeAddress(),
                         .record = shipment(u"Eleanor"_s)},
            .text = u"No answer yet."_s};
}
ResolvedPurchase other(const ResolvedPurchase &)
{
    return {.recipient = {}, .record = shipment(u"Ana Ortiz"_s), .isBought = true, .text = u"It was bought."_s};
}
template <class T>
std::optional<T> other(const std::optional<T> &value)
{
    return value ? std::nullopt : std::optional(other(T()));
}
/// Another first record, or the first record.
template <class T>
QList<T> other(QList<T> value)
{
    if (value.isEmpty())
        return {other(T())};
    value.first() = other(value.first());
    return value;
}

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
        changesOf<bool, int, double, qint64, QString, QByteArray, QDate, QUuid, AppFlow, MainTab, Carrier, ServiceClass,
                  ServiceOption, PostageMode, UpdatePhase, DraftField, MailpieceSelection, Banner, PrinterMessage,
                  UpdateInfo, KeyRow, ShippoRate, ShipmentRecord, LastLabel, DesklineInvoice, ScanForm, MasterEntry,
                  PostalContact, ShippoAddress, CustomsInfo, SenderProfile, BoxProfile, UnresolvedPurchase,
                  ResolvedPurchase>();
    return table;
}

struct OpenWindowDesk : WindowDesk {
    const SenderProfile away{.name = u"Away"_s, .address = homeAddress()};
    const BoxProfile carton{.name = u"Carton"_s, .length = u"9"_s, .width = u"6"_s, .height = u"2"_s};

    OpenWindowDesk()
    {
        EXPECT_TRUE(app().log.insert(shipment(u"Ruth"_s)));
        EXPECT_TRUE(app().log.insert(shipment(u"Silas"_s)));
        app().senders.profiles = app().senders.profiles.value() + QList{away};
        app().boxes.profiles = QList{carton};
        rest();
    }
    Screens &screens() { return program->screens(); }

    /// Lets everything end that was started and does not wait for the carrier.
    void rest()
    {
        for (int turn = 0; turn < 6; ++turn) {
            workPool().waitForDone();
            settle();
        }
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
            if (other->windowTitle() == u"SCAN Form")
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
        QResizeEvent firstLook(window().labelView().size(), {}); // the form may be behind another tab
        QCoreApplication::sendEvent(&second->labelView(), &firstLook);
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
    EXPECT_TRUE(desk.app().log.setStatus(*desk.screens().mailingLog.selected.value(), u"REFUNDED"_s));
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
    desk.label().lastLabel = other(LastLabel());
    desk.label().purchases.unresolved = QList{other(UnresolvedPurchase())};
    const auto expect = [&desk](const QString &text, bool on) {
        desk.rest();
        const Button *button = desk.button(text);
        EXPECT_EQ(button->isEnabled(), on) << text.toStdString();
        EXPECT_EQ(button->toolTip().isEmpty(), on) << text.toStdString();
    };
    const QStringList onTheForm = {u"Check again"_s, u"Reprint"_s, u"Print Invoice"_s};
    for (const bool busy : {true, false}) {
        desk.label().busy = busy;
        for (const QString &text : onTheForm)
            expect(text, !busy);
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
