#include "shell/UpdateFeed.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/RecordField.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <tuple>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The required part of a feed. Any other field may be missing or have another type some day.
struct Offer {
    QString version;
    QString url;
    QString notes;

    static constexpr auto fields()
    {
        return std::tuple{field("version", &Offer::version), field("url", &Offer::url), field("notes", &Offer::notes)};
    }
};

std::optional<qint64> wholeNumber(const Json &feed, const char *key)
{
    constexpr double limit = 9e18; // larger values do not fit 64 bits
    const auto found = feed.find(key);
    if (found == feed.end() || !found->is_number() || std::abs(found->get<double>()) > limit)
        return std::nullopt;
    return found->is_number_float() ? qint64(found->get<double>()) : found->get<qint64>();
}

std::optional<QString> text(const Json &feed, const char *key)
{
    const auto found = feed.find(key);
    if (found == feed.end() || !found->is_string())
        return std::nullopt;
    return QString::fromStdString(found->get_ref<const std::string &>());
}

/// A signature that is no text is damaged; it must not pass as a missing signature.
std::optional<QString> signatureIn(const Json &feed)
{
    const auto found = feed.find("signature");
    const bool isOther = found != feed.end() && !found->is_null() && !found->is_string();
    return isOther ? QString::fromUtf8(dumpJson(*found)) : text(feed, "signature");
}

QList<qint64> numbers(const QString &version)
{
    static const QRegularExpression others(u"[^0-9]+"_s);
    QList<qint64> found;
    for (const QString &piece : version.split(others, Qt::SkipEmptyParts))
        found += piece.toLongLong(); // 0 on overflow
    return found;
}

} // namespace

QByteArray UpdateInfo::signedText() const
{
    return "Parcelory " + version.toUtf8() + ' ' + sha256.value_or(QString()).toLower().toUtf8() + '\n';
}

std::optional<UpdateInfo> parseUpdateFeed(const QByteArray &json)
{
    try {
        const Json feed = parseJson(json);
        Offer offer;
        detail::decodeValue(feed, offer, std::string(), Keys::asIs);
        return UpdateInfo{offer.version,        offer.url,        offer.notes, wholeNumber(feed, "size"),
                          text(feed, "sha256"), signatureIn(feed)};
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

bool isNewer(const QString &a, const QString &than)
{
    const QList<qint64> ours = numbers(a), theirs = numbers(than);
    for (qsizetype i = 0; i < std::max(ours.size(), theirs.size()); ++i) {
        if (ours.value(i) != theirs.value(i))
            return ours.value(i) > theirs.value(i);
    }
    return false;
}

} // namespace parcelory
