#pragma once

#include "app/label/LabelScreen.h" // IWYU pragma: export
#include "shell/ErrorLog.h"        // IWYU pragma: export
#include "support/CarrierDesk.h"   // IWYU pragma: export

namespace parcelory::test {

/// The label screen over real services, the practice carrier and fake print tools.
struct LabelDesk : CarrierDesk {
    std::unique_ptr<ErrorLog> errors;
    std::unique_ptr<AppState> app;
    std::unique_ptr<LabelScreen> screenOwner;

    LabelDesk()
    {
        clock.start = QDateTime::currentDateTime(); // the practice carrier uses the real date
        preferences.setValue(QStringLiteral("printer.zebraQueue"), QStringLiteral("ZD421"));
        errors = std::make_unique<ErrorLog>(platform);
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        settle();
    }
    ~LabelDesk() // what the screen started ends first: in the program, a screen lives as long as the process
    {
        carrier.setScenario({}); // releases its answers
        runUntil([this] { return !screenOwner || !purchases().checking; });
        endRequests();
    }

    LabelScreen &screen() { return *screenOwner; }
    QString banner() { return screen().banner.value() ? screen().banner.value()->text : QString(); }
    bool bannerIsWarning() { return screen().banner.value() && !screen().banner.value()->ok; }

    /// Fills in a one-pound parcel in the desk's own packaging.
    void composeParcel(const ShippoAddress &to)
    {
        app->draftTo = to;
        screen().weightLb = QStringLiteral("1");
        screen().dimLength = QStringLiteral("9");
        screen().dimWidth = QStringLiteral("6");
        screen().dimHeight = QStringLiteral("2");
    }
    /// Presses Buy, and again if the parcel already has a label. The account's answer may change the warning between
    /// two presses, which takes another press.
    void buy()
    {
        pressBuy();
        for (int more = 0; more < 2 && screen().selectedRate() && screen().secondLabelAgreed; ++more)
            pressBuy();
    }
    /// One press, once the button has stopped changing.
    void pressBuy()
    {
        clock.advance(LabelScreen::buyPause);
        run(screen().buyAndPrint());
    }
    void composeAndRate(const ShippoAddress &to)
    {
        composeParcel(to);
        run(screen().fetchRates(true));
    }
    void buyLabel()
    {
        composeAndRate(homeAddress());
        buy();
    }
    Purchases &purchases() { return screen().purchases; }
    void checkAgain(int times = 1)
    {
        for (int time = 0; time < times; ++time) {
            runUntil([this] { return !purchases().checking; }); // a check may have started by itself
            run(purchases().checkAgain());
            runUntil([this] { return !purchases().checking; });
        }
    }
    /// Checks after the minute in which a request may still arrive.
    void checkLater(int times = 1)
    {
        clock.advance(std::chrono::seconds(61));
        checkAgain(times);
    }
    /// For TearDown: a lookup in progress would otherwise leak.
    void endLookups()
    {
        runUntil([this] { return !screenOwner || !purchases().checking; });
        settlePool();
    }
    /// True if the error log has an entry that begins like this.
    bool hasRecorded(const QString &start) const
    {
        return std::ranges::any_of(errors->entries(),
                                   [&](const auto &entry) { return entry.detail.startsWith(start); });
    }
    int requestsTo(const QByteArray &prefix)
    {
        return int(std::ranges::count_if(carrier.requests(),
                                         [&](const auto &request) { return request.target.startsWith(prefix); }));
    }
};

} // namespace parcelory::test
