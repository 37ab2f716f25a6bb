#include "app/scanform/ScanFormFlow.h"

#include "core/IsoDate.h"
#include "devices/Zpl.h"
#include "records/LabelChecks.h"
#include "records/ShipmentStatus.h"

#include <QScopeGuard>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// How far the clocks of desk and carrier may be apart, in seconds.
constexpr qint64 clockSkew = 300;

QString readyText(qsizetype labels)
{
    return u"SCAN form ready: "_s + QString::number(labels) + (labels == 1 ? u" label"_s : u" labels"_s) +
           u" — hand one printed copy to the carrier."_s;
}

/// True when the carrier made it after `form` was asked for, and of these labels. One that failed is nobody's form.
bool canBe(const ShippoManifest &manifest, const ScanForm &form)
{
    const std::optional<QDateTime> created = parseIso(manifest.objectCreated.value_or(QString()));
    const QList<QString> named = manifest.transactions.value_or(QList<QString>());
    const auto isOurs = [&form](const QString &transaction) { return form.transactions.contains(transaction); };
    return manifest.status != u"ERROR" && created && *created >= form.askedAt.addSecs(-clockSkew) &&
           (named.isEmpty() || std::ranges::any_of(named, isOurs));
}

Question oddLabelsQuestion(const QStringList &lines)
{
    constexpr qsizetype most = 8;
    QString text =
        u"Some of today's labels stand out:\n\n• "_s + lines.first(std::min(most, lines.size())).join(u"\n• "_s);
    if (lines.size() > most)
        text += u"\n• and %1 more"_s.arg(lines.size() - most);
    return {.title = u"SCAN Form"_s,
            .text = text + u"\n\nThe carrier puts only those on the form that it still takes."_s,
            .choices = {u"Cancel"_s, u"Make the SCAN Form"_s},
            .safeChoice = 0};
}

AppError notStored(const ShipmentLog &log)
{
    return AppError(u"The mailing log could not be written — %1."_s.arg(log.lastError()));
}

} // namespace

Task<> ScanFormFlow::create(ShippoAddress from)
{
    if (m_app.scanFormBusy)
        co_return;
    m_app.scanFormBusy = true;
    const std::tuple asked(m_app.session, m_app.keyChanges.value());
    const auto isStale = [this, asked] { return asked != std::tuple(m_app.session, m_app.keyChanges.value()); };
    const auto done = qScopeGuard([this] { m_app.scanFormBusy = false; });
    auto tokenRead = onPool([this] { return m_app.keys.activeToken().value_or(QString()); });
    const QString token = co_await tokenRead;
    const bool testKey = ShippoKeys::isTest(token);
    auto reading = onPool([this, today = m_app.platform.clock.now().date()] { return m_app.log.labelsOf(today); });
    const QList<ShipmentRecord> today = co_await reading;
    if (isStale()) // whoever is here now has not asked, or asked with another key
        co_return;
    const qsizetype labels = std::ranges::count(today, testKey, &ShipmentRecord::testMode);
    if (labels == 0) {
        m_app.scanFormBusy = false;
        co_await showNoLabelsToManifest(testKey);
        co_return;
    }
    const QString before = m_app.scanFormStatus, creating = u"Creating SCAN form for today's labels…"_s;
    try {
        auto looking = onPool([this, testKey] { return m_app.scanForms.underWay(testKey); });
        const QList<ScanForm> lost = co_await looking;
        if (!lost.isEmpty())
            m_app.scanFormStatus = creating;
        const bool shown = co_await recoverForms(lost);
        if (!shown) {
            const bool agreed = co_await confirmOddLabels(today, testKey);
            if (!agreed || isStale()) {
                m_app.scanFormStatus = before;
                co_return;
            }
            m_app.scanFormStatus = creating;
            m_app.scanFormPDF = co_await requestForm(today, testKey, from);
            m_app.scanFormStatus = readyText(labels);
        }
        if (!isStale()) // made only once, so it is kept for others too: the Window menu opens it
            m_app.scanFormOpenTick = m_app.scanFormOpenTick + 1;
    } catch (const AppError &error) {
        m_app.scanFormStatus = error.description();
        m_app.errors.record(u"SCAN Form"_s, error, Popup::no);
    }
}

Task<> ScanFormFlow::showNoLabelsToManifest(bool testKey)
{
    m_app.scanFormStatus = u"No labels printed today — nothing to manifest."_s;
    co_await m_app.platform.prompts.alert(
        u"SCAN Form"_s,
        testKey ? u"No TEST labels have been printed today, so there's nothing to put on a SCAN form. (You're on the "
                  "test key — labels bought under a different key don't count.)"_s
                : u"No labels have been printed today, so there's nothing to put on a SCAN form."_s);
}

/// True on a plain day, and when the clerk knows better.
Task<bool> ScanFormFlow::confirmOddLabels(QList<ShipmentRecord> labels, bool testKey)
{
    auto looking = onPool([this, labels, testKey, now = m_app.platform.clock.now()] {
        QStringList lines;
        for (const ShipmentRecord &label : labels) {
            const QStringList doubts = labelWarnings(LabelUse::scanForm, label,
                                                     {.now = now,
                                                      .testKey = testKey,
                                                      .tracked = m_app.labelHistory.of(label.id).tracked,
                                                      .lastReprint = {},
                                                      .onScanForm = m_app.scanForms.formWith(label.transactionID),
                                                      .waiting = {}});
            if (!doubts.isEmpty())
                lines += u"%1 (%2): %3"_s.arg(label.recipientName(), label.tracking, doubts.join(u' '));
        }
        return lines;
    });
    const QStringList lines = co_await looking;
    if (lines.isEmpty())
        co_return true;
    const int answer = co_await m_app.platform.prompts.choose(oddLabelsQuestion(lines));
    co_return answer == 1;
}

/// Asks the carrier for a form, which is written down before: its answer may never come. Gives the first document.
Task<QByteArray> ScanFormFlow::requestForm(QList<ShipmentRecord> labels, bool testKey, ShippoAddress from)
{
    const QList<ShippoCarrierAccount> accounts = co_await m_app.shippo.carrierAccounts();
    const auto usps = std::ranges::find(accounts, u"usps"_s, &ShippoCarrierAccount::carrier);
    if (usps == accounts.end())
        throw ShippoError::api(u"No USPS carrier account found on this Shippo account."_s);
    ScanForm form{.askedAt = m_app.platform.clock.now(), .testMode = testKey, .manifestId = {}, .transactions = {}};
    for (const ShipmentRecord &label : labels) {
        if (label.testMode == testKey)
            form.transactions += label.transactionID;
    }
    form.labels = int(form.transactions.size());
    auto noting = onPool([this, form] { return m_app.scanForms.begin(form); });
    const std::optional<qint64> id = co_await noting;
    if (!id)
        throw notStored(m_app.log);
    form.id = *id;
    ShippoManifest manifest;
    std::exception_ptr refused;
    try {
        manifest = co_await m_app.shippo.createManifest(usps->objectId, from, form.askedAt);
    } catch (const ShippoError &error) {
        if (error.kind() != ShippoError::Kind::validation)
            throw; // it may have been made all the same: whoever asks next, asks for that first
        refused = std::current_exception();
    }
    if (refused) {
        auto removing = onPool([this, id = form.id] { return m_app.scanForms.remove(id); });
        co_await removing;
        std::rethrow_exception(refused);
    }
    QByteArray document = co_await fetchDocuments(form, manifest);
    co_return document;
}

/// Downloads and keeps what belongs to a form that the carrier has made. Gives the first document.
Task<QByteArray> ScanFormFlow::fetchDocuments(ScanForm form, ShippoManifest manifest)
{
    auto noting = onPool([this, form, manifest] {
        return m_app.scanForms.setMade(form.id, manifest.objectId, manifest.transactions.value_or(QList<QString>()));
    });
    const bool noted = co_await noting;
    QList<QByteArray> documents;
    for (const QString &link : manifest.documents.value_or(QList<QString>())) {
        const QByteArray document = co_await m_app.shippo.downloadLabel(link);
        if (labelKind(document) != LabelKind::pdf || !isWhole(document))
            throw ShippoError::api(u"SCAN form created, but what came back is not a complete PDF document. Press SCAN "
                                   "Form again."_s);
        documents += document;
    }
    if (documents.isEmpty())
        throw ShippoError::api(u"SCAN form created but no document came back."_s);
    auto storing = onPool([this, id = form.id, documents] { return m_app.scanForms.store(id, documents); });
    const bool stored = co_await storing;
    if (!noted || !stored) // it can be printed now, and is fetched once more with the next press
        m_app.errors.record(u"SCAN Form"_s, notStored(m_app.log), Popup::no);
    QByteArray first = documents.first();
    co_return first;
}

/// What the carrier knows of a form that was asked for; nothing when it knows of none. Throws while that is not sure.
Task<std::optional<ShippoManifest>> ScanFormFlow::findManifest(ScanForm form)
{
    QString id = form.manifestId;
    if (id.isEmpty()) {
        const QList<ShippoManifest> newest = co_await m_app.shippo.newestManifests();
        auto choosing = onPool([this, form, newest] {
            const auto found = std::ranges::find_if(newest, [&](const ShippoManifest &manifest) {
                return canBe(manifest, form) && !m_app.scanForms.knowsManifest(manifest.objectId);
            });
            return found == newest.end() ? QString() : found->objectId;
        });
        id = co_await choosing;
    }
    std::optional<ShippoManifest> made;
    if (!id.isEmpty()) {
        const ShippoManifest manifest = co_await m_app.shippo.manifest(id);
        if (manifest.status == u"SUCCESS")
            made = manifest;
    } else if (ShippoClient::mayStillArrive(form.askedAt, m_app.platform.clock.now())) {
        throw ShippoError::api(
            u"It is not known yet whether the SCAN form of %1 was made. Try again in a minute."_s.arg(
                dateTimeText(form.askedAt)));
    }
    co_return made;
}

/// The first document of a form whose answer was lost; nothing when the carrier has not made it, or has no document
/// for it.
Task<std::optional<QByteArray>> ScanFormFlow::recoverForm(ScanForm form)
{
    const std::optional<ShippoManifest> made = co_await findManifest(form);
    std::optional<QByteArray> document;
    if (made && made->documents && !made->documents->isEmpty()) {
        document = co_await fetchDocuments(form, *made);
        co_return document;
    }
    auto closing = onPool([this, form, made] {
        return made ? m_app.scanForms.setMade(form.id, made->objectId, made->transactions.value_or(QList<QString>())) &&
                          m_app.scanForms.store(form.id, {})
                    : m_app.scanForms.remove(form.id);
    });
    const bool closed = co_await closing;
    if (!closed)
        throw notStored(m_app.log);
    co_return document;
}

/// True when one had been made today whose answer was lost; it is the last form now. One of an earlier day only goes
/// to the others that were made: it is not handed over any more, and must not stand in the way of today's.
Task<bool> ScanFormFlow::recoverForms(QList<ScanForm> forms)
{
    bool shown = false;
    for (const ScanForm &form : forms) {
        const bool isOfToday = form.askedAt.toLocalTime().date() == m_app.platform.clock.now().date();
        std::optional<QByteArray> document;
        try {
            document = co_await recoverForm(form);
        } catch (const AppError &) {
            if (isOfToday)
                throw;
        }
        if (!document || !isOfToday)
            continue;
        m_app.scanFormPDF = document;
        m_app.scanFormStatus = readyText(form.labels);
        shown = true;
    }
    co_return shown;
}

/// At the start and now and then: silent when the carrier cannot be asked.
Task<> ScanFormFlow::recoverLostForms()
{
    auto looking = onPool([this] {
        const QString token = m_app.keys.activeToken().value_or(QString());
        return token.isEmpty() ? QList<ScanForm>() : m_app.scanForms.underWay(ShippoKeys::isTest(token));
    });
    const QList<ScanForm> lost = co_await looking;
    if (m_app.scanFormBusy || lost.isEmpty())
        co_return;
    m_app.scanFormBusy = true;
    const auto done = qScopeGuard([this] { m_app.scanFormBusy = false; });
    try {
        co_await recoverForms(lost);
    } catch (const AppError &) { // the next press of SCAN Form says what is wrong
    }
}

} // namespace parcelory
