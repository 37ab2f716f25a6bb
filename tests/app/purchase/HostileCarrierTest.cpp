// Whatever the carrier answers, the program goes on, tells it in a few lines, and neither loses nor doubles a label.

#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/HostileAnswers.h"
#include "shell/ErrorLog.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <QTimer>

#include <chrono>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class HostileCarrierTest : public testing::Test, public LabelDesk {
protected:
    void TearDown() override { endLookups(); }
    /// The next `count` requests of this kind get the answer; a trickle uses up the time of its request.
    void answerNext(CarrierFailure failure, const QByteArray &path, const QByteArray &method, int count)
    {
        failure.pathPrefix = path;
        failure.method = method;
        failure.count = count;
        CarrierScenario scenario;
        scenario.failNext = failure;
        scenario.droppedPath = method == "GET" ? "transactions/" : "";
        carrier.setScenario(scenario);
        if (failure.flow == AnswerFlow::trickle)
            m_hurry.start(50);
    }
    void recover()
    {
        m_hurry.stop();
        carrier.setScenario({});
        clock.advance(61s);
        checkAgain();
    }
    void expectFewWords()
    {
        EXPECT_LE(banner().size(), 2 * AppError::longest);
        for (const APIErrorEntry &entry : errors->entries())
            EXPECT_LE(entry.detail.size(), AppError::longest);
        errors->clear();
    }
    ShippoAddress next()
    {
        ShippoAddress to = homeAddress();
        to.name = u"Parcel %1"_s.arg(++m_parcels);
        return to;
    }

private:
    QTimer m_hurry;
    int m_parcels = 0;

protected:
    HostileCarrierTest()
    {
        m_hurry.callOnTimeout([this] { networkClock.advance(60s); });
    }
};

} // namespace

TEST_F(HostileCarrierTest, NoAnswerEndsTheProgramOrLosesOrDoublesALabel)
{
    qsizetype labels = 0;
    for (const HostileAnswer &hostile : hostileAnswers()) {
        SCOPED_TRACE(hostile.name);
        answerNext(hostile.failure, "shipments", "POST", 1);
        composeAndRate(next());
        EXPECT_LE(screen().rates.value().size(), 500);
        for (const ShippoRate &rate : screen().rates.value())
            EXPECT_GE(decimal(rate.amount).value_or(-1), 0) << rate.amount.toStdString();
        expectFewWords();
        recover();

        composeAndRate(next());
        ASSERT_TRUE(screen().selectedRate()) << banner().toStdString();
        answerNext(hostile.failure, "transactions", "POST", 1);
        pressBuy();
        expectFewWords();
        EXPECT_FALSE(banner().startsWith(u"Success"_s));
        recover();
        EXPECT_TRUE(purchases().unresolved.value().isEmpty()) << "nothing was sold";
        EXPECT_EQ(app->log.records().size(), labels);

        composeAndRate(next());
        answerNext(hostile.failure, "transactions", "GET",
                   3); // the label is sold, the response lost, the lookup hostile
        pressBuy();
        expectFewWords();
        recover();
        EXPECT_TRUE(purchases().unresolved.value().isEmpty());
        EXPECT_EQ(app->log.records().size(), ++labels) << banner().toStdString();
        EXPECT_TRUE(app->journal.openPurchases().isEmpty());
        const QList<ResolvedPurchase> told = purchases().resolved;
        for (const ResolvedPurchase &label : told)
            purchases().dismiss(label);
    }
}

} // namespace parcelory::test
