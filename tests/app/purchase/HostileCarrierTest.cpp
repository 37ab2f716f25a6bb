// Whatever the carrier answers, the program goes on, tells it in a few lines, and neither loses nor doubles a label.

#include "practice/carrier/HostileAnswers.h"
#include "support/AppTest.h"

#include <QTimer>

namespace parcelory::test {
namespace {

class HostileCarrierTest : public LabelTest {
protected:
    HostileCarrierTest()
    {
        m_hurry.callOnTimeout([this] {
            if (std::ranges::any_of(carrier.requests(), [this](const PracticeCarrier::Request &request) {
                    return request.method == m_method && request.target.startsWith(m_path);
                }))
                networkClock.advance(60s); // an earlier request of another kind keeps its time
        });
    }
    /// The next requests of this kind get the answer; a trickle uses up the time of its request. If the lookups are
    /// hostile, the response of the purchase is lost.
    void answerNext(CarrierFailure failure, const QByteArray &path, const QByteArray &method)
    {
        const bool isLookup = method == "GET";
        failure.pathPrefix = path;
        failure.method = method;
        failure.count = isLookup ? 3 : 1;
        carrier.setScenario({.droppedPath = isLookup ? "transactions/" : "", .failNext = failure});
        carrier.clearRequests();
        m_method = method;
        m_path = '/' + path;
        if (failure.flow == AnswerFlow::trickle)
            m_hurry.start(50);
    }
    void recover()
    {
        EXPECT_LE(banner().size(), 2 * AppError::longest);
        for (const APIErrorEntry &entry : errors->entries())
            EXPECT_LE(entry.detail.size(), AppError::longest);
        errors->clear();
        m_hurry.stop();
        carrier.setScenario({});
        checkLater();
        EXPECT_EQ(unresolved(), 0);
    }
    void rateNext() { composeAndRate(homeOf(u"Parcel %1"_s.arg(++m_parcels))); }

private:
    QTimer m_hurry;
    QByteArray m_method, m_path; ///< of the requests whose time is up early
    int m_parcels = 0;
};

} // namespace

TEST_F(HostileCarrierTest, NoAnswerEndsTheProgramOrLosesOrDoublesALabel)
{
    qsizetype labels = 0;
    for (const HostileAnswer &hostile : hostileAnswers()) {
        SCOPED_TRACE(hostile.name);
        answerNext(hostile.failure, "shipments", "POST");
        rateNext();
        EXPECT_LE(screen().rates.value().size(), 500);
        for (const ShippoRate &rate : screen().rates.value())
            EXPECT_GE(decimal(rate.amount).value_or(-1), 0) << rate.amount.toStdString();
        recover();

        for (const bool isSold :
             {false, true}) { // the purchase gets the answer, or the lookups of a label that is sold
            rateNext();
            ASSERT_TRUE(isRated()) << banner().toStdString();
            answerNext(hostile.failure, "transactions", isSold ? "GET" : "POST");
            pressBuy();
            EXPECT_TRUE(isSold || !banner().startsWith(u"Success"_s));
            recover();
            EXPECT_EQ(app->log.records().size(), labels += isSold) << banner().toStdString();
        }
        EXPECT_TRUE(app->journal.openPurchases().isEmpty());
        const QList<ResolvedPurchase> told = purchases().resolved;
        for (const ResolvedPurchase &label : told)
            purchases().dismiss(label);
    }
}

} // namespace parcelory::test
