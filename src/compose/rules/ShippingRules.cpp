#include "compose/rules/ShippingRules.h"

#include "core/AppError.h"
#include "core/Deployment.h"
#include "core/SettingsKeys.h"
#include "core/ports/Preferences.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largest = 1 << 20; // bytes

struct Reading {
    std::optional<RuleBook> book;
    QString refusal;
};

/// The rules of a file that is newer than `builtIn`.
Reading newerRules(const QString &path, const QDate &builtIn)
{
    const QFileInfo info(path);
    if (!info.exists())
        return {};
    const auto refuse = [&](const QString &why) {
        return Reading{{},
                       u"%1 of %2 can't be read (%3) — the built-in rules of %4 are used."_s.arg(
                           info.fileName(), ruleDayText(info.lastModified().date()), why, ruleDayText(builtIn))};
    };
    QFile file(path);
    if (!info.isFile() || info.size() > largest || !file.open(QIODevice::ReadOnly))
        return refuse(u"no readable file of at most 1 MB"_s);
    try {
        const RuleBook book = RuleBook::parse(file.read(largest));
        return book.date > builtIn ? Reading{book, {}} : Reading{};
    } catch (const RuleFileError &error) {
        return refuse(error.description());
    }
}

void putCompanyInto(RuleBook &book, const Deployment &company)
{
    book.setInsurerExclusion(company.insurerExclusion.value_or(QString()), company.insurerExcludes);
}

} // namespace

QString ruleDayText(const QDate &day)
{
    return day.toString(u"MM/dd/yy"_s);
}

ShippingRules::ShippingRules(Platform &platform) : m_platform(platform)
{
    RuleBook compiled = RuleBook::builtIn();
    putCompanyInto(compiled, platform.deployment);
    book = compiled;
    off = read(platform.preferences, settings::rulesOff);
    m_offWatch = off.addNotifier([this] { write(m_platform.preferences, settings::rulesOff, off); });
}

Task<> ShippingRules::load()
{
    const QString path = folder() + u"/us-shipping.json"_s;
    Reading found = co_await onPool([path, date = book.value().date] { return newerRules(path, date); });
    refusal = found.refusal;
    if (!found.book)
        co_return;
    putCompanyInto(*found.book, m_platform.deployment);
    book = *found.book;
    isBuiltIn = false;
}

void ShippingRules::setOn(const QString &id, bool on)
{
    QStringList ids = off;
    ids.removeAll(id);
    if (!on)
        ids.append(id);
    off = ids;
}

} // namespace parcelory
