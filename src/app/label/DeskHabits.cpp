#include "app/label/DeskHabits.h"

#include "core/SettingsKeys.h"
#include "core/ports/Preferences.h"

#include <QStringList>

#include <cmath>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The value of "name=value"; empty if the list has no such name.
QString valueOf(const QStringList &list, const QString &name)
{
    for (const QString &entry : list) {
        if (entry.startsWith(name + u'='))
            return entry.mid(name.size() + 1);
    }
    return {};
}

QStringList withValue(QStringList list, const QString &name, const QString &value)
{
    list.removeIf([&name](const QString &entry) { return entry.startsWith(name + u'='); });
    return list << name + u'=' + value;
}

/// Parcels of nearly the same weight mostly go in the same box: steps of 4 ounces, above a pound of a pound.
QString weightStep(double ounces)
{
    const double step = ounces <= 16 ? 4 : 16;
    return QString::number(qint64(std::ceil(ounces / step) * step));
}

} // namespace

DeskHabits::Choice DeskHabits::choice() const
{
    const QStringList words = read(m_preferences, settings::labelChoice);
    return {words.value(0), words.value(1), words.value(2)};
}

void DeskHabits::note(const Choice &choice)
{
    write(m_preferences, settings::labelChoice, {choice.carrier, choice.svcClass, choice.mailpiece});
}

QString DeskHabits::mailpieceFor(double ounces) const
{
    return ounces > 0 ? valueOf(read(m_preferences, settings::mailpieceByWeight), weightStep(ounces)) : QString();
}

void DeskHabits::noteMailpiece(double ounces, const QString &mailpiece)
{
    write(m_preferences, settings::mailpieceByWeight,
          withValue(read(m_preferences, settings::mailpieceByWeight), weightStep(ounces), mailpiece));
}

QString DeskHabits::signerOf(const QString &user) const
{
    return valueOf(read(m_preferences, settings::customsSigners), user);
}

void DeskHabits::noteSigner(const QString &user, const QString &signer)
{
    write(m_preferences, settings::customsSigners,
          withValue(read(m_preferences, settings::customsSigners), user, signer));
}

} // namespace parcelory
