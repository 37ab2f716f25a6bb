#include "platform/SettingsPreferences.h"

#include "core/PrivateFiles.h"

#include <QDir>
#include <QStandardPaths>

#include <mutex>
#include <utility>

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

/// Sets aside what QSettings must not read.
void clear(const QStringList &files)
{
    for (const QString &file : files) {
        setAsideUnlessFile(file, largest);
        setAsideUnlessFile(file + u".lock"_s, largest);
    }
    if (!files.isEmpty()) { // QSettings keeps the mode
        createPrivateFile(files.last());
        makePrivate(files.last());
    }
}

} // namespace

SettingsPreferences::SettingsPreferences()
    : SettingsPreferences([] {
          clear(userFiles());
          return std::make_unique<QSettings>(organization, application);
      })
{
}

SettingsPreferences::SettingsPreferences(const QString &iniFile)
    : SettingsPreferences([iniFile] {
          clear({iniFile});
          return std::make_unique<QSettings>(iniFile, QSettings::IniFormat);
      })
{
}

SettingsPreferences::SettingsPreferences(Open open) : m_open(std::move(open)), m_settings(m_open()) {}

QVariant SettingsPreferences::value(const QString &key) const
{
    const std::lock_guard lock(m_access);
    return m_settings->value(stored(key));
}

void SettingsPreferences::setValue(const QString &key, const QVariant &value)
{
    const std::lock_guard lock(m_access);
    m_settings->setValue(stored(key), value);
}

bool SettingsPreferences::synchronize()
{
    const std::lock_guard lock(m_access);
    m_settings->sync();
    const std::unique_ptr<QSettings> now = m_open(); // QSettings does not forget a failure that is over
    now->sync();                                     // all objects of one file share their changes
    return now->status() == QSettings::NoError && now->isWritable();
}

} // namespace parcelory
