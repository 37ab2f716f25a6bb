#pragma once

#include <QList>
#include <QUuid>

#include <algorithm>

namespace parcelory {

/// Two programs' changes of one list of records, brought together by the records' `id`.
template <class Record>
struct ListMerge {
    QList<Record> records;    ///< in the order of `theirs`, followed by the records that are new here
    QList<Record> overridden; ///< records that were changed here and there; the change made here is kept
};

/// Brings the change from `base` to `ours` into `theirs`.
template <class Record>
ListMerge<Record> mergeLists(const QList<Record> &base, const QList<Record> &ours, const QList<Record> &theirs)
{
    const auto in = [](const QList<Record> &list, const QUuid &id) -> const Record * {
        const auto found = std::ranges::find(list, id, &Record::id);
        return found == list.end() ? nullptr : &*found;
    };
    ListMerge<Record> merged;
    for (const Record &there : theirs) {
        const Record *before = in(base, there.id), *here = in(ours, there.id);
        const bool isNewThere = !before && !here;
        const bool isChangedHere = !isNewThere && (!here || !before || !(*here == *before));
        const bool isChangedThere = !before || !(there == *before);
        if (isChangedHere && isChangedThere && !(here && *here == there))
            merged.overridden.append(here ? *here : there);
        if (!isChangedHere)
            merged.records.append(there);
        else if (here)
            merged.records.append(*here);
    }
    for (const Record &here : ours) {
        if (in(theirs, here.id))
            continue;
        const Record *before = in(base, here.id);
        if (before && here == *before)
            continue; // removed there
        if (before)
            merged.overridden.append(here); // removed there and changed here
        merged.records.append(here);
    }
    return merged;
}

} // namespace parcelory
