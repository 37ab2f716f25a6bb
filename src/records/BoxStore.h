#pragma once

#include "core/JsonFile.h"
#include "core/Observable.h"
#include "core/Platform.h"
#include "records/BoxProfile.h"

#include <QProperty>

#include <optional>

namespace parcelory {

/// The desk's own boxes, in box_profiles.json. Assigning to `profiles` writes the file.
class BoxStore : public Observable {
public:
    /// Loads the file; without one the list is empty and no file is written before the first change.
    explicit BoxStore(Platform &platform);

    Observed<QList<BoxProfile>> profiles{this};

    std::optional<BoxProfile> find(const QUuid &id) const;
    /// Appends a box without dimensions, "New Box".
    BoxProfile add();
    void remove(const QUuid &id);

    void flush() { m_file.flush(); }
    /// Reads the file again after it was replaced.
    void reload() { load(); }

private:
    void load();

    JsonFile m_file;
    QPropertyNotifier m_notifier;
};

} // namespace parcelory
