#pragma once

#include "app/logs/MailingLogScreen.h" // IWYU pragma: export
#include "records/ShipmentRecord.h"    // IWYU pragma: export
#include "support/LabelDesk.h"         // IWYU pragma: export

namespace parcelory::test {

/// The mailing log's screen beside the label screen.
class MailingLogDesk : public testing::Test, public LabelDesk {
protected:
    MailingLogScreen log{*app};

    // A query that the test did not wait for still reports to the screen.
    void TearDown() override { settlePool(); }
    /// A label bought at this desk, as the log lists it.
    ShipmentRecord bought()
    {
        buyLabel();
        EXPECT_FALSE(log.records().isEmpty()) << banner().toStdString();
        return log.records().value(0);
    }
    /// Adds a shipment to the log without a purchase.
    ShipmentRecord logged(ShipmentRecord record)
    {
        EXPECT_TRUE(app->log.insert(record));
        settle();
        return log.records().value(0);
    }
    /// The carrier's next answer below `path`.
    void answer(const QByteArray &path, const QByteArray &body, int status = 200)
    {
        carrier.setScenario(answering(path, status, body));
    }
};

} // namespace parcelory::test
