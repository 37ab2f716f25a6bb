#include "app/support/SupportBundle.h"

#include "app/AppState.h"
#include "app/support/SupportFacts.h"
#include "core/AppError.h"
#include "core/SaveFile.h"
#include "core/SettingsKeys.h"
#include "core/Sqlite.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"
#include "shell/ErrorLog.h"
#include "shell/Redactor.h"
#include "shell/ZipFile.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

/// What only the main thread may read.
struct SupportBundle::Facts {
    QString version;
    QDateTime now;
    SupportFacts::Counts counts;
    QList<APIErrorEntry> errors;
    QStringList names; ///< names, addresses and the like that the screens know
    QList<PostalContact> contacts;
};

SupportBundle::SupportBundle(AppState &app, LabelScreen &label, AddressBook &book, KeysScreen &keys, Trace &trace)
    : m_app(app), m_label(label), m_book(book), m_keys(keys), m_trace(trace)
{
}

SupportBundle::Facts SupportBundle::facts() const
{
    const QList<UnresolvedPurchase> &open = m_label.purchases.unresolved.value();
    Facts facts{.version = m_app.platform.application.version(),
                .now = m_app.platform.clock.now(),
                .counts = {.addresses = m_book.contacts().size(),
                           .senders = m_app.senders.profiles.value().size(),
                           .boxes = m_app.boxes.profiles.value().size(),
                           .unresolved = open.size()},
                .errors = m_app.errors.entries(),
                .names = {m_app.signedInUser, m_app.draftReference},
                .contacts = m_book.contacts()};
    const auto addAddress = [&facts](const ShippoAddress &address) {
        facts.names += {address.name, address.company, address.street1, address.street2,
                        address.city, address.phone,   address.email};
    };
    const auto addDraft = [&](const SavedDraft &draft) {
        addAddress(draft.recipient);
        facts.names += {draft.descriptionText, draft.reference, draft.customsSigner};
    };
    addDraft(m_label.saved());
    if (const std::optional<StoredDraft> stored = m_app.drafts.stored())
        addDraft(stored->draft);
    addAddress(m_app.replacedRecipient);
    if (const std::optional<DesklineInvoice> &invoice = m_app.scannedInvoice.value()) {
        addAddress(invoice->address);
        facts.names += {invoice->buyerName, invoice->invoiceID, invoice->tracking};
        for (const DesklineInvoiceItem &item : invoice->items)
            facts.names += item.title;
        for (const DesklineInvoiceNote &note : invoice->notes)
            facts.names += {note.text, note.by};
    }
    for (const ShipmentRecord &label : m_app.log.records())
        facts.names += {label.recipient, label.reference, label.descriptionText};
    addAddress(m_app.platform.deployment.returnAddress);
    for (const UnresolvedPurchase &purchase : open)
        addAddress(purchase.purchase.recipient);
    for (const SenderProfile &sender : m_app.senders.profiles.value()) {
        addAddress(sender.address);
        facts.names += sender.name;
    }
    for (const BoxProfile &box : m_app.boxes.profiles.value())
        facts.names += box.name;
    for (const KeyRow &key : m_keys.keys.value()) {
        ++(key.test ? facts.counts.testKeys : facts.counts.liveKeys);
        facts.names += key.name;
    }
    const Preferences &preferences = m_app.platform.preferences;
    facts.names += {read(preferences, settings::signInName), read(preferences, settings::senderFallbackEmail),
                    read(preferences, settings::senderFallbackPhone)};
    facts.names += read(preferences, settings::customsSigners);
    return facts;
}

/// The recipients and references of the newest labels, whatever the log's list shows. Waits for the disk.
QStringList SupportBundle::namesInLog(const ShipmentLog &log)
{
    const auto names = log.read<QStringList>([](const Database &db) -> std::optional<QStringList> {
        QStringList found;
        Statement newest(db, "SELECT recipient, reference, description FROM shipments ORDER BY id DESC LIMIT 20000");
        while (newest.step())
            found += {newest.text(0), newest.text(1), newest.text(2)};
        return newest.isComplete() ? std::optional(found) : std::nullopt;
    });
    return names.valueOr({});
}

QString SupportBundle::errorsOf(const AppState &app, const Facts &facts)
{
    constexpr qsizetype longest = 2000; // characters of an entry
    Redactor redactor;
    for (const QString &name : facts.names + namesInLog(app.log))
        redactor.learn(name);
    for (const PostalContact &contact : facts.contacts) {
        for (const QString &text : {contact.name, contact.company, contact.street1, contact.street2, contact.city})
            redactor.learn(text);
    }
    QString text;
    for (const APIErrorEntry &entry : facts.errors)
        text += entry.date.toUTC().toString(Qt::ISODate) + u' ' + redactor.redacted(entry.context) + u": "_s +
                redactor.redacted(entry.detail.left(longest).simplified()) + u'\n';
    return text;
}

SupportBundle::Files SupportBundle::collect(AppState &app, Trace &trace, const Facts &facts)
{
    return {{u"about.txt"_s, SupportFacts::about(app, facts.version, facts.now)},
            {u"settings.txt"_s, SupportFacts::settings(app.platform.preferences)},
            {u"records.txt"_s, SupportFacts::records(app, facts.counts)},
            {u"printers.txt"_s, SupportFacts::printers(app)},
            {u"errors.txt"_s, errorsOf(app, facts).toUtf8()},
            {u"activity.txt"_s, trace.lines().join('\n') + '\n'}};
}

Task<> SupportBundle::save()
{
    if (saving)
        co_return;
    saving = true;
    const auto done = qScopeGuard([this] { saving = false; });
    const QString name = u"Parcelory Support %1.zip"_s.arg(m_app.platform.clock.now().date().toString(Qt::ISODate));
    const QString path = co_await m_app.platform.prompts.saveFile(u"Save Support Bundle"_s, name);
    if (path.isEmpty())
        co_return;
    QString failure;
    try {
        co_await onPool([&app = m_app, &trace = m_trace, facts = facts(), path] {
            saveBytes(path, zipOf(collect(app, trace, facts)));
        });
    } catch (const AppError &error) {
        failure = m_app.recorded(u"Support Bundle"_s, error, Popup::no);
    }
    if (failure.isEmpty())
        co_await m_app.platform.prompts.alert(
            u"Support Bundle Saved"_s,
            u"“%1” tells support what the program did and what failed. Names, addresses, tracking numbers and keys are "
            "not in it."_s.arg(QFileInfo(path).fileName()));
    else
        co_await m_app.platform.prompts.alert(u"Support Bundle Not Saved"_s, failure);
}

} // namespace parcelory
