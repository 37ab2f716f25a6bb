#pragma once

#include "core/RecordField.h"
#include "records/LogChain.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>
#include <tuple>

namespace parcelory {

enum class CopyReason { daily, beforeImport, beforeUpdate, byHand, beforeRestore };

/// A copy of the records, as its manifest copy.json describes it.
struct RecordCopy {
    struct File {
        QString name;
        double bytes = 0;
        QString hash; ///< BLAKE2b-256, hexadecimal

        bool operator==(const File &) const = default;

        static constexpr auto fields()
        {
            return std::tuple{field("name", &File::name), field("bytes", &File::bytes), field("hash", &File::hash)};
        }
    };

    QString folder; ///< its name in the folder of the copies; not in the manifest
    QDateTime madeAt;
    QString reason;               ///< wordOf() a CopyReason
    int labels = 0;               ///< rows of the mailing log
    int addresses = 0;            ///< entries of the address book
    double headPosition = 0;      ///< the end of the mailing log's chain of hashes; see LogChain
    QString headHash;             ///< hexadecimal
    std::optional<QString> logId; ///< LogChain::idOf() the log, hexadecimal; absent if an earlier version made the copy
    QList<File> files;
    QString failure;                   ///< why the copy failed or cannot be trusted; empty if its check passed
    std::optional<QDateTime> restored; ///< of the records before a restore: when the copy that replaced them was made

    bool operator==(const RecordCopy &) const = default;
    bool isGood() const { return failure.isEmpty(); }
    double bytes() const;
    LogChain::Head head() const;

    static constexpr auto fields()
    {
        using C = RecordCopy;
        return std::tuple{field("madeAt", &C::madeAt),
                          field("reason", &C::reason),
                          field("labels", &C::labels),
                          field("addresses", &C::addresses),
                          field("headPosition", &C::headPosition),
                          field("headHash", &C::headHash),
                          field("logId", &C::logId),
                          field("files", &C::files),
                          field("failure", &C::failure),
                          field("restored", &C::restored)};
    }
};

QString wordOf(CopyReason reason);

} // namespace parcelory
