#include "app/records/RestoreTexts.h"

#include "core/Text.h"
#include "records/ShipmentStatus.h"

#include <QLocale>
#include <QRegularExpression>

namespace parcelory::RestoreTexts {
using namespace Qt::StringLiterals;

namespace {

QString number(qint64 value)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(value);
}

QString counted(qint64 count, const QString &one, const QString &many)
{
    return number(count) + u' ' + (count == 1 ? one : many);
}

QString labels(qint64 count)
{
    return counted(count, u"label"_s, u"labels"_s);
}

QString addresses(qint64 count)
{
    return counted(count, u"address"_s, u"addresses"_s);
}

QString boxes(qint64 count)
{
    return counted(count, u"box"_s, u"boxes"_s);
}

QString profiles(qint64 count)
{
    return counted(count, u"sender profile"_s, u"sender profiles"_s);
}

Group holds(const RestoreReview &review)
{
    const QString last = review.held.last.isValid() ? u", the last of "_s + dateTimeText(review.held.last) : QString();
    return {.kind = GroupKind::holds,
            .title = u"This copy holds"_s,
            .head = labels(review.copy.labels) + last,
            .lines = {addresses(review.copy.addresses) + u", "_s + boxes(review.boxes) + u", "_s +
                      profiles(review.profiles)}};
}

Group lost(const RestoreReview &review)
{
    Group group{.kind = GroupKind::lost, .title = u"Would be lost"_s, .head = {}, .lines = {}};
    double postage = 0;
    for (const QList<ShipmentRecord> &list : {review.added.labels, review.fromAccount}) {
        for (const ShipmentRecord &label : list)
            postage += label.postage;
    }
    QStringList parts;
    if (review.lost() > 0)
        parts += labels(review.lost()) + u" bought since, $"_s + fixed(postage, 2);
    if (!review.isLogWhole())
        parts += u"The mailing log is damaged — it may have held more labels."_s;
    if (review.added.imported > 0)
        parts += counted(review.added.imported, u"imported shipment"_s, u"imported shipments"_s) + u" added since"_s;
    if (review.addresses.added > 0)
        parts += addresses(review.addresses.added) + u" added since"_s;
    if (review.addresses.changed > 0)
        parts += addresses(review.addresses.changed) + u" changed since"_s;
    if (review.changedBoxes > 0)
        parts += boxes(review.changedBoxes) + u" added or changed since"_s;
    if (review.changedProfiles > 0)
        parts += profiles(review.changedProfiles) + u" added or changed since"_s;
    group.head = parts.isEmpty() ? u"Nothing — no label and no address was added since."_s : parts.takeFirst();
    group.lines = parts;
    return group;
}

Group comesBack(const RestoreReview &review)
{
    using Account = RestoreReview::Account;
    Group group{.kind = GroupKind::comesBack, .title = u"Comes back"_s, .head = {}, .lines = {}};
    const qsizetype fromLog = review.added.labels.size(), fromAccount = review.fromAccount.size();
    const QString silent = u"The account does not answer — labels can be brought back later."_s;
    if (review.account == Account::asking) {
        group.head = u"Asking the carrier's account…"_s;
        return group;
    }
    if (fromLog > 0 && fromAccount > 0)
        group.head = u"%1: %2 from the present log, %3 from the carrier's account"_s.arg(
            labels(fromLog + fromAccount), number(fromLog), number(fromAccount));
    else if (fromLog > 0)
        group.head = labels(fromLog) + u", from the present log"_s;
    else if (fromAccount > 0)
        group.head = labels(fromAccount) + u", from the carrier's account"_s;
    if (!group.head.isEmpty())
        group.lines += u"with tracking, price and label — no postage is bought"_s;
    if (review.account == Account::silent)
        group.lines += silent;
    if (group.head.isEmpty())
        group.head = group.lines.isEmpty() ? u"Nothing is missing."_s : group.lines.takeFirst();
    return group;
}

Group staysLost(const RestoreReview &review)
{
    Group group{.kind = GroupKind::staysLost, .title = u"Does not come back"_s, .head = {}, .lines = {}};
    QStringList parts;
    if (!review.isLogWhole())
        parts += u"labels that aren't in the account"_s;
    if (review.isAccountCut)
        parts += u"older labels that the account didn't list"_s;
    if (review.added.imported > 0)
        parts += u"the "_s + counted(review.added.imported, u"imported shipment"_s, u"imported shipments"_s);
    if (review.addresses.added > 0)
        parts += u"the "_s + addresses(review.addresses.added);
    QStringList changes;
    if (review.addresses.changed > 0)
        changes += addresses(review.addresses.changed);
    if (review.changedBoxes > 0)
        changes += boxes(review.changedBoxes);
    if (review.changedProfiles > 0)
        changes += profiles(review.changedProfiles);
    if (!changes.isEmpty())
        parts += u"the changes to "_s + changes.join(u", "_s);
    group.head = parts.join(u", and "_s);
    if (!group.head.isEmpty())
        group.head[0] = group.head[0].toUpper();
    return group;
}

} // namespace

QString reasonOf(const RecordCopy &copy)
{
    const QString &reason = copy.reason;
    if (reason == wordOf(CopyReason::daily))
        return u"Daily"_s;
    if (reason == wordOf(CopyReason::beforeImport))
        return u"Before an import"_s;
    if (reason == wordOf(CopyReason::beforeUpdate))
        return u"Before an update"_s;
    if (reason == wordOf(CopyReason::beforeRestore))
        return u"Before a restore"_s;
    return reason == wordOf(CopyReason::byHand) ? u"By hand"_s : reason;
}

QString sizeText(double bytes)
{
    return QLocale(QLocale::English, QLocale::UnitedStates)
        .formattedDataSize(qint64(bytes), bytes < 1e9 ? 0 : 1, QLocale::DataSizeSIFormat);
}

QString nameOf(const RecordCopy &copy)
{
    return u"Copy of %1 — %2, checked, %3"_s.arg(dateTimeText(copy.madeAt), reasonOf(copy).toLower(),
                                                 sizeText(copy.bytes()));
}

QList<Group> groupsOf(const RestoreReview &review)
{
    QList<Group> groups{holds(review), lost(review), comesBack(review)};
    if (const Group rest = staysLost(review); !rest.head.isEmpty())
        groups += rest;
    return groups;
}

QString noteOf(const RestoreReview &review)
{
    return u"Today's records are set aside first, in “%1”. Nothing is deleted."_s.arg(review.setAside);
}

QString outcomeOf(const RestoreNote &note)
{
    const QString copy = note.copyMadeAt.isValid() ? u"the copy of "_s + dateTimeText(note.copyMadeAt) : u"the copy"_s;
    const QString missing = note.missing > 0 ? u", %1 not"_s.arg(number(note.missing)) : QString();
    return u"Restored %1 — %2 brought back%3."_s.arg(copy, labels(note.broughtBack), missing);
}

QString placeOf(const QString &folder)
{
    static const QRegularExpression volumes(u"^(/Volumes/|/media/[^/]+/|/run/media/[^/]+/|/mnt/|/)"_s);
    return QString(folder).remove(volumes).replace(u"/"_s, u" ▸ "_s);
}

QString progressOf(const RecordCopy &copy, double share)
{
    return u"Restoring %1 of %2"_s.arg(number(qint64(double(copy.labels) * share)), labels(copy.labels));
}

} // namespace parcelory::RestoreTexts
