#pragma once

#include "carrier/ShippoClient.h"
#include "carrier/ShippoKeys.h"
#include "core/CompanySanitizer.h"
#include "core/Platform.h"
#include "core/PostalContact.h"
#include "devices/LabelPrinter.h"
#include "devices/ScanWedgeListener.h"
#include "devices/USBScale.h"
#include "records/BoxStore.h"
#include "records/SenderStore.h"
#include "records/ShipmentLog.h"
#include "shell/ErrorLog.h"

#include <QObject>
#include <QProperty>

#include <vector>

namespace parcelory {

enum class AppFlow { login, main };

/// The main window's tabs, in the order of the tab bar.
enum class MainTab { newLabel, mailingLog, masterLog, settings };

struct MainTabInfo {
    MainTab tab;
    QString title;
};

const QList<MainTabInfo> &mainTabs();

/// The state that more than one screen reads, and the owner of every long-lived service. Made once, lives until the
/// program ends; main thread only. Services are members in their order of creation.
class AppState : public QObject {
    Q_OBJECT
public:
    explicit AppState(Platform &platform);
    ~AppState() override; ///< waits for what still runs on the thread pool

    Platform &platform;
    ErrorLog &errors; ///< ErrorLog::shared()

    QProperty<AppFlow> flow{AppFlow::login};
    QProperty<MainTab> tab{MainTab::newLabel};
    QProperty<QString> lastShipmentSummary; ///< one line about the last label bought
    QProperty<QString> scanStatus;          ///< scanner and invoice status line
    QProperty<int> keyChanges{0}; ///< counts changes of the API keys: what was rated under one is not another's

    // The hand-off to the New Label screen: set draftTo and draftReference, then count draftFillCount up.
    QProperty<ShippoAddress> draftTo;
    QProperty<QString> draftReference;
    QProperty<int> draftFillCount{0};

    CompanySanitizer sanitizer;
    ShippoKeys keys;
    ShippoClient shippo;
    USBScale scale;
    ShipmentLog log;
    SenderStore senders;
    BoxStore boxes;
    LabelPrinter printer;
    ScanWedgeListener scanListener;

    /// Pushes a recipient of the address book into the label draft and shows it.
    void fillRecipient(const PostalContact &contact);
    /// The scanner read an invoice's code.
    void handleInvoiceScan(const QString &code);
    /// The scanner heard keys that are no invoice code.
    void reportScanNoise(const QString &heard);

signals:
    /// Any observable field, or the mailing log, has changed.
    void changed();

private:
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
