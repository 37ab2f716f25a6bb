#include "compose/SecondLabel.h"

#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString foldedName(const QString &name)
{
    return name.simplified().toCaseFolded();
}

/// Address validation adds or removes the last four digits of a US ZIP.
QString foldedZip(const QString &zip)
{
    return zip.trimmed().section(u'-', 0, 0).toCaseFolded();
}

bool isGivenBack(const ShipmentRecord &label)
{
    const RefundState state = refundState(label);
    return state == RefundState::granted || state == RefundState::pending;
}

QString description(const ShipmentRecord &label, const QDateTime &now)
{
    const QString what =
        joinPresent({label.carrier, label.service}, u" "_s) + u" label "_s + groupsOfFour(label.tracking);
    if (!label.createdAt.isValid())
        return what + u" was bought earlier"_s;
    const QDateTime time = label.createdAt.toLocalTime();
    const QString day = time.date() == now.date() ? u"today"_s : u"on "_s + time.toString(u"MMM d, yyyy"_s);
    return u"%1 was bought %2 at %3"_s.arg(what, day, time.toString(u"h:mm AP"_s));
}

} // namespace

bool isSameRecipient(const ShippoAddress &one, const ShippoAddress &other)
{
    return foldedName(one.name) == foldedName(other.name) && foldedZip(one.zip) == foldedZip(other.zip);
}

bool isLabelFor(const ShippoAddress &recipient, const ShipmentRecord &label)
{
    const QString name = foldedName(recipient.name), line = foldedName(label.recipient);
    return !name.isEmpty() && (line == name || line.startsWith(name + u',')) &&
           foldedZip(label.zip11) == foldedZip(recipient.zip);
}

QStringList secondLabelReasons(const SecondLabelFacts &facts)
{
    QStringList reasons;
    if (facts.lastOutcomeUnknown)
        reasons += u"A label for this recipient may have been bought: the carrier has not confirmed it yet."_s;
    if (facts.isLogUnreadable)
        reasons += u"The mailing log can't be read, so Parcelory can't check for an earlier label."_s;
    const QString reference = facts.reference.trimmed();
    for (const ShipmentRecord &label : facts.earlier) {
        if (isGivenBack(label))
            continue;
        const bool sameReference =
            !reference.isEmpty() && label.reference.trimmed().compare(reference, Qt::CaseInsensitive) == 0;
        if (sameReference)
            reasons += description(label, facts.now) + u" for the same reference."_s;
        else if (isLabelFor(facts.recipient, label) && label.createdAt.toLocalTime().date() == facts.now.date())
            reasons += description(label, facts.now) + u" for the same recipient."_s;
        else
            continue;
        break; // the newest label is enough
    }
    if (!facts.elsewhere.isEmpty())
        reasons += description(facts.elsewhere.first(), facts.now) + u" by another desk for the same recipient."_s;
    if (!facts.invoiceTracking.trimmed().isEmpty())
        reasons +=
            u"The invoice already has a tracking number: %1."_s.arg(groupsOfFour(facts.invoiceTracking.trimmed()));
    return reasons;
}

} // namespace parcelory
