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

    /// The text that the feed's publisher signs. It names the version, so that an old archive cannot be offered as new.
    QByteArray signedText() const;
};

/// Parses a feed; empty if a required field is missing.
std::optional<UpdateInfo> parseUpdateFeed(const QByteArray &json);

/// True if version `a` is newer than version `than`. Compares their numbers one by one; separators do not matter.
bool isNewer(const QString &a, const QString &than);

} // namespace parcelory
