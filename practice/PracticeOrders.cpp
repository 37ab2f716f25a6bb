#include "practice/PracticeOrders.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Json.h"
#include "core/Task.h"

#include <QFile>

#include <algorithm>
#include <chrono>
#include <optional>

static void loadResources()
{
    Q_INIT_RESOURCE(practice);
}

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The value that `word` stands for; the error names an unknown word.
template <class T>
T known(const std::optional<T> &value, const QString &what, const QString &word)
{
    if (!value)
        throw AppError(u"The order names an unknown %1: \"%2\"."_s.arg(what, word));
    return *value;
}

std::optional<MailpieceSelection> mailpieceFrom(const QString &id)
{
    if (presetBox(id))
        return PresetMailpiece{id};
    const auto found = std::ranges::find(builtinMailpieces(), id, &BuiltinMailpieceInfo::id);
    return found == builtinMailpieces().end() ? std::nullopt : std::optional<MailpieceSelection>(found->mailpiece);
}

/// The order's declaration; contents and value default to those of the invoice.
CustomsInfo customsOf(const PracticeOrder &order, CustomsInfo customs)
{
    customs.quantity = order.quantity.value_or(u"1"_s);
    customs.value = order.declaredValue.value_or(customs.value);
    customs.signer = order.signer.value_or(QString());
    if (order.contents)
        customs.itemType = known(customsItemTypeFrom(*order.contents), u"kind of contents"_s, *order.contents);
    return customs;
}

Task<> takeInvoice(AppState &app, QString number)
{
    app.handleInvoiceScan(number);
    while (app.scanBusy)
        co_await app.platform.clock.sleep(std::chrono::milliseconds(20));
    if (app.draftReference.value() != number)
        throw AppError(app.scanStatus);
}

} // namespace

QList<PracticeOrder> readOrders(const QString &path)
{
    loadResources();
    QFile file(path.isEmpty() ? u":/practice/orders.json"_s : path);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"The orders %1 could not be opened — %2."_s.arg(path, file.errorString()));
    try {
        const auto orders = decodeJson<QList<PracticeOrder>>(file.readAll(), Keys::asIs);
        for (qsizetype at = 0; at < orders.size(); ++at) {
            if (orders[at].to.has_value() == orders[at].invoice.has_value())
                throw DecodeError(u"order %1 needs either \"to\" or \"invoice\""_s.arg(at + 1));
        }
        return orders;
    } catch (const DecodeError &error) {
        throw AppError(u"The orders %1 cannot be used — %2."_s.arg(path, error.description()));
    }
}

Task<> compose(PracticeOrder order, AppState &app, LabelScreen &screen)
{
    screen.clearDraft();
    screen.mailpiece = BuiltinMailpiece::package;
    if (order.invoice)
        co_await takeInvoice(app, *order.invoice);
    else
        app.draftTo = *order.to;
    if (order.carrier)
        screen.carrier = known(carrierFrom(*order.carrier), u"carrier"_s, *order.carrier);
    if (order.mailpiece)
        screen.mailpiece = known(mailpieceFrom(*order.mailpiece), u"mailpiece"_s, *order.mailpiece);
    if (order.serviceClass)
        screen.svcClass = known(serviceClassFrom(*order.serviceClass), u"service class"_s, *order.serviceClass);
    if (order.option)
        screen.service = known(serviceOptionFrom(*order.option), u"extra service"_s, *order.option);
    screen.weightLb = order.weightLb;
    screen.weightOz = order.weightOz;
    if (order.length && order.width && order.height) {
        screen.dimLength = *order.length;
        screen.dimWidth = *order.width;
        screen.dimHeight = *order.height;
    }
    screen.insuranceValue = order.insurance.value_or(QString());
    screen.fedexResidential = order.residential.value_or(false);
    screen.customs = customsOf(order, screen.customs);
    screen.reference = order.reference.value_or(order.invoice.value_or(QString()));
    screen.descriptionText = order.description.value_or(QString());
}

} // namespace parcelory
