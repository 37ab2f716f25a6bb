#include "app/scanform/ScanFormScreen.h"

#include "app/purchase/LabelPrinting.h"
#include "core/AppError.h"
#include "core/SaveFile.h"
#include "core/Task.h"
#include "records/LogRead.h"
#include "records/ScanForms.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "shell/ErrorLog.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString context = u"SCAN Form"_s; ///< of failures
const QString handOver = u"Hand one printed copy to the carrier."_s;

QString counted(qsizetype labels)
{
    return QString::number(labels) + (labels == 1 ? u" label"_s : u" labels"_s);
}

/// Adds the labels on the form that the mailing log does not hold.
QList<ShipmentRecord> withOthers(QList<ShipmentRecord> known, const ScanForm &form)
{
    for (const QString &id : form.transactions) {
        if (std::ranges::find(known, id, &ShipmentRecord::transactionID) != known.end())
            continue;
        ShipmentRecord other{.createdAt = QDateTime(), .recipient = u"Bought at another desk"_s};
        other.transactionID = id;
        known += other;
    }
    return known;
}

} // namespace

QString ScanFormScreen::title(const ScanForm &form)
{
    return dateTimeText(form.askedAt) + u" — "_s + counted(form.transactions.size()) +
           (form.testMode ? u" (TEST)"_s : QString());
}

QString ScanFormScreen::labelsText() const
{
    const std::optional<ScanForm> form = shown;
    if (!form)
        return {};
    const qsizetype all = form->transactions.size();
    const qsizetype others = std::ranges::count(labels.value(), 0, &ShipmentRecord::id);
    QString text = counted(all) + u" on this form"_s;
    if (others > 0)
        text += u", %1 from other desks"_s.arg(others);
    const qsizetype ofTheDay = std::ranges::count_if(labels.value(), [day = form->askedAt.date()](const auto &label) {
        return label.id != 0 && label.createdAt.date() == day;
    });
    const qsizetype leftOff = form->labels - ofTheDay;
    if (leftOff > 0)
        text += u". The carrier did not put %1 of the day's %2 on the form."_s.arg(QString::number(leftOff),
                                                                                   counted(form->labels));
    return text;
}

Task<> ScanFormScreen::load()
{
    const auto finished = co_await onPool(m_app.scanForms, &ScanForms::finished, listLimit);
    if (finished.isRead())
        forms = *finished;
    if (!forms.value().isEmpty())
        co_await show(forms.value().first());
    const std::optional<QByteArray> last = m_app.scanFormPDF;
    if (last && documents.value().value(0) != *last) { // the last form could not be stored, so show it from memory
        shown = std::nullopt;
        labels = QList<ShipmentRecord>();
        documents = QList<QByteArray>{*last};
    }
    if (!finished.isRead())
        message = m_app.recorded(context, AppError(finished.failure()), Popup::no);
    else if (documents.value().isEmpty() == forms.value().isEmpty()) // otherwise show() has reported why
        message = documents.value().isEmpty() ? QString() : handOver;
}

Task<> ScanFormScreen::show(ScanForm form)
{
    struct Contents {
        LogRead<QList<QByteArray>> documents;
        LogRead<QList<ShipmentRecord>> labels;
    };
    shown = form;
    const Contents contents = co_await onPool([&store = m_app.scanForms, form] {
        const auto labels = store.labelsOn(form);
        if (!labels.isRead()) // do not wait again
            return Contents{LogRead<QList<QByteArray>>::failed(labels.failure()), labels};
        return Contents{store.documents(form.id), labels};
    });
    if (shown.value() != form)
        co_return; // the clerk chose another form meanwhile
    labels = contents.labels.isRead() ? withOthers(*contents.labels, form) : QList<ShipmentRecord>();
    documents = contents.documents.valueOr({});
    message = contents.documents.isRead() ? handOver
                                          : m_app.recorded(context, AppError(contents.documents.failure()), Popup::no);
}

Task<> ScanFormScreen::print()
{
    return run(&ScanFormScreen::printAll);
}

Task<> ScanFormScreen::save()
{
    return run(&ScanFormScreen::saveAll);
}

Task<> ScanFormScreen::run(Task<QString> (ScanFormScreen::*operation)())
{
    if (busy || documents.value().isEmpty())
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    message = QString(); // clear first so that an identical message is announced again
    try {
        const QString outcome = co_await (this->*operation)();
        message = outcome;
    } catch (const AppError &error) {
        message = m_app.recorded(context, error, Popup::no);
    }
}

Task<QString> ScanFormScreen::printAll()
{
    const QString form = shown.value() ? shown.value()->manifestId : QString();
    const bool sentToQueue = co_await printForm(m_app, documents, form);
    co_return sentToQueue ? u"SCAN form sent to the printer."_s
                          : u"SCAN form opened in Preview — set a document printer in Settings."_s;
}

/// Returns an empty text if canceled.
Task<QString> ScanFormScreen::saveAll()
{
    const QList<QByteArray> all = documents;
    const QDateTime made = shown.value() ? shown.value()->askedAt : m_app.platform.clock.now();
    QStringList saved;
    for (const QByteArray &document : all) {
        const QString number =
            all.size() == 1 ? QString()
                            : u" (%1 of %2)"_s.arg(QString::number(saved.size() + 1), QString::number(all.size()));
        const QString proposed = u"SCAN Form %1%2.pdf"_s.arg(made.date().toString(Qt::ISODate), number);
        const QString path = co_await m_app.platform.prompts.saveFile(u"Save SCAN Form"_s, proposed);
        if (path.isEmpty())
            break;
        co_await onPool([path, document] { saveBytes(path, document); });
        saved += QFileInfo(path).fileName();
    }
    co_return saved.isEmpty() ? QString() : u"Saved to "_s + saved.join(u", "_s);
}

} // namespace parcelory
