#include "app/endofday/DayTexts.h"

#include "core/Text.h"

#include <QLocale>

#include <algorithm>
#include <optional>

namespace parcelory::DayTexts {
using namespace Qt::StringLiterals;

namespace {

const QLocale &english()
{
    static const QLocale language(QLocale::English, QLocale::UnitedStates);
    return language;
}

QString exemption(const ExemptLabel &label, KeyView key)
{
    switch (label.reason) {
    case Exemption::refund:
        return u"refund asked"_s;
    case Exemption::otherKey:
        return key.test ? u"not TEST"_s : u"TEST"_s;
    case Exemption::imported:
        break;
    }
    return u"imported"_s;
}

} // namespace

QString counted(qsizetype labels)
{
    return QString::number(labels) + (labels == 1 ? u" label"_s : u" labels"_s);
}

QString dollars(double amount)
{
    return u'$' + fixed(amount, 2);
}

QString time(const QDateTime &when)
{
    return english().toString(when, u"h:mm AP"_s);
}

QString askedAt(const AskedRefund &refund)
{
    return u"asked at "_s + time(refund.askedAt);
}

QString headline(const DayReport &report)
{
    return english().toString(report.day, u"dddd"_s) + u" · "_s + counted(report.labels.all.size()) +
           u" bought at this desk"_s;
}

QString summary(const DayReport &report)
{
    return counted(report.labels.counted) + u" • "_s + dollars(report.labels.dollars) + u" postage"_s;
}

QString names(const QList<DayLabel> &labels)
{
    constexpr qsizetype most = 3;
    QStringList names;
    for (const DayLabel &label : labels.first(std::min(most, labels.size())))
        names += isolated(label.record.recipientName());
    if (labels.size() > most)
        names += u'+' + QString::number(labels.size() - most);
    return names.join(u", "_s);
}

QString formTime(const DayOfLabels &labels)
{
    const auto last = std::ranges::max_element(labels.onForm, {}, &DayLabel::onForm);
    if (last == labels.onForm.end())
        return {};
    const QDateTime made = *last->onForm;
    const bool isSameDay = made.date() == last->record.createdAt.date();
    return u"made at "_s + time(made) + (isSameDay ? QString() : english().toString(made, u" on MM/dd/yy"_s));
}

QString exemptions(const QList<ExemptLabel> &labels, KeyView key)
{
    QStringList reasons;
    for (const ExemptLabel &label : labels)
        reasons += exemption(label, key);
    reasons.removeDuplicates();
    return reasons.join(u", "_s);
}

QString service(const QString &service)
{
    for (const QString &carrier : {u"USPS "_s, u"FedEx "_s}) {
        if (service.startsWith(carrier))
            return service.mid(carrier.size());
    }
    return service;
}

QString place(const ShipmentRecord &record)
{
    QStringList parts = record.recipient.split(u',', Qt::SkipEmptyParts);
    constexpr qsizetype countryCode = 2;
    QString country;
    if (parts.size() > 2 && parts.last().trimmed().size() == countryCode)
        country = parts.takeLast().trimmed();
    if (parts.size() < 2)
        return country;
    QStringList words = parts.last().split(u' ', Qt::SkipEmptyParts);
    words.removeIf(
        [](const QString &word) { return std::ranges::any_of(word, [](QChar c) { return c.isDigit(); }); }); // the ZIP
    return joinPresent(words << country, u" "_s);
}

QString printState(const DayLabel &label)
{
    return label.print == PrintState::never ? u"Never printed"_s : u"Print not confirmed"_s;
}

QString papers(const DayLabel &label)
{
    return label.record.isIntl && !label.isElectronic ? u"3 invoice copies go along, one signed"_s : QString();
}

QString difference(DifferenceKind kind)
{
    switch (kind) {
    case DifferenceKind::boughtElsewhere:
        return u"Bought elsewhere"_s;
    case DifferenceKind::notInAccount:
        return u"Not in the account"_s;
    case DifferenceKind::otherAmount:
        return u"Another amount"_s;
    case DifferenceKind::refundedHere:
        return u"Refund asked here, not there"_s;
    case DifferenceKind::refundedThere:
        break;
    }
    return u"Refunded there, not here"_s;
}

QString explanation(DifferenceKind kind)
{
    switch (kind) {
    case DifferenceKind::boughtElsewhere:
        return u"Bought at another desk or in the browser. This log doesn't have it."_s;
    case DifferenceKind::notInAccount:
        return u"The account of the active key has no such label; another key may have bought it."_s;
    case DifferenceKind::otherAmount:
        return u"The account and this log show different amounts."_s;
    case DifferenceKind::refundedHere:
        return u"The account still charges this label: check the refund's status in the mailing log."_s;
    case DifferenceKind::refundedThere:
        break;
    }
    return u"Another desk or the browser requested this refund. Don't use this label."_s;
}

QString amount(const std::optional<double> &amount)
{
    return amount ? dollars(*amount) : u"—"_s;
}

} // namespace parcelory::DayTexts
