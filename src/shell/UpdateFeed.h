#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace parcelory {

/// A version of the program that the update feed offers.
struct UpdateInfo {
    QString version;
    QString url; ///< of the zipped application bundle
    QString notes;
    std::optional<qint64> size;       ///< of the archive in bytes
    std::optional<QString> sha256;    ///< of the archive, hexadecimal
    std::optional<QString> signature; ///< of signedText(), base64

    bool operator==(const UpdateInfo &) const = default;

    /// What the feed's publisher signs. It names the version, so that an old archive cannot be offered as a new one.
    QByteArray signedText() const;
};

/// Reads a feed; nothing when it lacks what an offer needs.
std::optional<UpdateInfo> parseUpdateFeed(const QByteArray &json);

/// Whether version `a` comes after version `than`: their numbers are compared one by one, whatever stands between them.
bool isNewer(const QString &a, const QString &than);

} // namespace parcelory
