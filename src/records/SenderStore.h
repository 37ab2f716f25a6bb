#pragma once

#include "core/JsonFile.h"
#include "core/Observable.h"
#include "core/Platform.h"
#include "records/SenderProfile.h"

#include <QProperty>

#include <optional>

namespace parcelory {

/// The desk's return addresses, in sender_profiles.json. Assigning to either field writes the file, and takes over what
/// another program has changed in it.
class SenderStore : public Observable {
    Q_OBJECT
public:
    /// Loads the file. A profile in it that does not decode is left out, and the next write sets the whole file aside
    /// first. Without a readable profile, makes a first profile from the preferences of earlier versions or, failing
    /// that, from the deployment's return address.
    explicit SenderStore(Platform &platform);

    Observed<QList<SenderProfile>> profiles{this}; ///< never empty
    Observed<std::optional<QUuid>> defaultID{this};

    /// The profile of defaultID, or the first one.
    std::optional<SenderProfile> defaultProfile() const;
    std::optional<SenderProfile> find(const QUuid &id) const;

    /// Appends an empty profile, "New Profile".
    SenderProfile add();
    /// Removes a profile; the last one stays.
    void remove(const QUuid &id);
    /// Puts a removed profile back in its place.
    void insert(qsizetype place, const SenderProfile &profile);

    void flush() { m_file.flush(); }
    /// Reads the file again after it was replaced; keeps the profiles if the file is missing or unreadable.
    void reload() { load(); }

signals:
    /// These profiles were changed here and by another program; the changes made here are kept.
    void overridden(const QStringList &names);

private:
    std::optional<QByteArray> merged(const QByteArray &base, const QByteArray &ours, const QByteArray &theirs);
    bool load();
    void seed(Platform &platform);
    void persist();

    JsonFile m_file;
    QPropertyNotifier m_profilesNotifier, m_defaultNotifier;
};

} // namespace parcelory
