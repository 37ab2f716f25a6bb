#pragma once

#include "core/JsonFile.h"
#include "core/Observable.h"
#include "core/Platform.h"
#include "records/BoxProfile.h"

#include <QProperty>

#include <optional>

namespace parcelory {

/// The desk's own boxes, in box_profiles.json. Assigning to `profiles` writes the file, and takes over what another
/// program has changed in it.
class BoxStore : public Observable {
    Q_OBJECT
public:
    /// Loads the file; without one the list is empty and no file is written before the first change.
    explicit BoxStore(Platform &platform);

    Observed<QList<BoxProfile>> profiles{this};

    std::optional<BoxProfile> find(const QUuid &id) const;
    /// Appends a box without dimensions, "New Box".
    BoxProfile add();
    void remove(const QUuid &id);
    /// Puts a removed box back in its place.
    void insert(qsizetype place, const BoxProfile &box);

    void flush() { m_file.flush(); }
    /// Reads the file again after it was replaced.
    void reload() { load(); }

signals:
    /// These boxes were changed here and by another program; the changes made here are kept.
    void overridden(const QStringList &names);

private:
    void load();
    std::optional<QByteArray> merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs);

    JsonFile m_file;
    QPropertyNotifier m_notifier;
};

} // namespace parcelory
