#pragma once

#include "app/records/RestoreReview.h"
#include "records/RestoreStage.h"

#include <QStringList>

/// What a restore would do, in the clerk's words.
namespace parcelory::RestoreTexts {

enum class GroupKind { holds, lost, comesBack, staysLost };

struct Group {
    GroupKind kind;
    QString title;
    QString head;      ///< the main line
    QStringList lines; ///< below it; a long list scrolls

    bool operator==(const Group &) const = default;
};

/// "Copy of 11/19/26, 7:01 AM — daily, checked, 212 MB"
QString nameOf(const RecordCopy &copy);
/// "Daily", "Before an import"
QString reasonOf(const RecordCopy &copy);
/// "212 MB"
QString sizeText(double bytes);
QList<Group> groupsOf(const RestoreReview &review);
/// "Today's records are set aside first, in “Before Restore 11-20-26”. Nothing is deleted."
QString noteOf(const RestoreReview &review);
/// "Restored the copy of 11/19/26, 7:01 AM — 10 labels brought back, 1 not."
QString outcomeOf(const RestoreNote &note);
/// A folder for people, from its volume on: "Desk Backup ▸ Parcelory Copies".
QString placeOf(const QString &folder);
QString progressOf(const RecordCopy &copy, double share);

} // namespace parcelory::RestoreTexts
