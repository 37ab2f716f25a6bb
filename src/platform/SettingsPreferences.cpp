#include "platform/SettingsPreferences.h"

#include "core/PrivateFiles.h"

#include <QDir>
#include <QStandardPaths>

#include <mutex>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// On macOS, Qt stores a slash as the dot of a defaults key and replaces a dot with another character.
QString stored(QString key)
{
#ifdef Q_OS_MACOS
    key.replace(u'.', u'/');
#endif
    return key;
}

constexpr qint64 largest = 4 * 1024 * 1024;
const QString organization = u"Corvallon"_s, application = u"parcelory"_s;

/// The files of the user that QSettings reads for these names, and the locks beside them. macOS asks a system service.
QStringList userFiles()
{
#ifdef Q_OS_MACOS
    return {};
#else
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    return {folder.filePath(organization + u".conf"_s),
            folder.filePath(organization + u'/' + application + u".conf"_s)};
#endif
}

/// Sets aside what QSettings must not read, and returns `name`.
const QString &cleared(const QStringList &files, const QString &name)
{
    for (const QString &file : files) {
        setAsideUnlessFile(file, largest);
        setAsideUnlessFile(file + u".lock"_s, largest);
    }
    if (!files.isEmpty()) { // QSettings keeps the mode
        createPrivateFile(files.last());
        makePrivate(files.last());
    }
    return name;
}

} // namespace

SettingsPreferences::SettingsPreferences() : m_settings(cleared(userFiles(), organization), application) {}

SettingsPreferences::SettingsPreferences(const QString &iniFile)
    : m_settings(cleared({iniFile}, iniFile), QSettings::IniFormat)
{
}

QVariant SettingsPreferences::value(const QString &key) const
{
    const std::lock_guard lock(m_access);
    return m_settings.value(stored(key));
}

void SettingsPreferences::setValue(const QString &key, const QVariant &value)
{
    const std::lock_guard lock(m_access);
    m_settings.setValue(stored(key), value);
}

} // namespace parcelory
