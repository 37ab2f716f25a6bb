#include "platform/SettingsPreferences.h"

#include "core/PrivateFiles.h"

#include <QDir>
#include <QStandardPaths>

#include <mutex>
#include <tuple>
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

QHash<QString, QVariant> valuesIn(const QSettings &settings)
{
    QHash<QString, QVariant> all;
    for (const QString &key : settings.allKeys())
        all.insert(key, settings.value(key));
    return all;
}

/// Without the values of the whole system.
std::unique_ptr<QSettings> withoutFallbacks(std::unique_ptr<QSettings> settings)
{
    settings->setFallbacksEnabled(false);
    return settings;
}

} // namespace

SettingsPreferences::SettingsPreferences()
    : SettingsPreferences([] {
          clear(userFiles());
          return withoutFallbacks(std::make_unique<QSettings>(organization, application));
      })
{
}

SettingsPreferences::SettingsPreferences(const QString &iniFile)
    : SettingsPreferences([iniFile] {
          clear({iniFile});
          return withoutFallbacks(std::make_unique<QSettings>(iniFile, QSettings::IniFormat));
      })
{
}

SettingsPreferences::SettingsPreferences(Open open) : m_open(std::move(open)), m_values(valuesIn(*m_open())) {}

QVariant SettingsPreferences::value(const QString &key) const
{
    const std::lock_guard lock(m_access);
    return m_values.value(stored(key));
}

void SettingsPreferences::setValue(const QString &key, const QVariant &value)
{
    const std::lock_guard lock(m_access);
    m_values[stored(key)] = value;
    m_changed[stored(key)] = value;
    if (!std::exchange(m_isPosted, true))
        m_queue.post([this] { std::ignore = synchronize(); }); // a caller that must know asks again
}

bool SettingsPreferences::synchronize()
{
    const std::lock_guard disk(m_disk);
    Values changed;
    {
        const std::lock_guard lock(m_access);
        changed = m_changed;
        m_isPosted = false;
    }
    const auto isUsable = [](const QSettings &settings) {
        return settings.status() == QSettings::NoError && settings.isWritable();
    };
    const std::unique_ptr<QSettings> settings = m_open(); // QSettings does not forget a failure that is over
    for (const auto &[key, value] : changed.asKeyValueRange())
        settings->setValue(key, value);
    settings->sync();
    if (!isUsable(*settings) && !isUsable(*m_open())) // the first object may have mended a line that it could not read
        return false;
    Values values = valuesIn(*settings);
    const std::lock_guard lock(m_access);
    m_changed.removeIf([&](const auto &entry) { return changed.value(entry.key()) == entry.value(); });
    values.insert(m_changed); // since then
    m_values = values;
    return true;
}

} // namespace parcelory
