#pragma once

#include "app/AppState.h"
#include "core/Task.h"

#include <QProperty>

#include <functional>
#include <vector>

namespace parcelory {

/// What came of the last thing done to the printers.
struct PrinterMessage {
    QString text;
    bool ok = true; ///< false shows it as a warning

    bool operator==(const PrinterMessage &) const = default;
};

/// The Settings screen but for the API keys. There is no "save": what is assigned or edited here is stored at once.
/// Lives as long as AppState.
class SettingsScreen {
public:
    explicit SettingsScreen(AppState &app);

    // Printers. Queue names; the empty text is "none chosen".
    QProperty<QStringList> queues, zebraQueues; ///< as last discovered
    QProperty<bool> showAllPrinters{false};     ///< offers every queue for labels
    QProperty<QString> zebraQueue;
    QProperty<QString> documentQueue; ///< none: documents open in the viewer
    QProperty<bool> rotate180{true};
    QProperty<PrinterMessage> printerMessage;
    QProperty<bool> busy{false};

    QProperty<bool> showAddressSidebar{true}; ///< beside the label form

    // What stands in where a sender profile leaves these blank.
    QProperty<QString> fallbackEmail, fallbackPhone;

    QStringList labelPrinterChoices() const;
    /// "— no Zebra detected —" once that is known; otherwise empty.
    QString zebraHint() const;
    /// A chosen queue as a menu shows it: with a note when the system does not know it at present.
    QString queueTitle(const QString &queue) const;

    /// Discovers the queues. A label printer that is not among the Zebra queues gives way to the first of them.
    Task<> refreshPrinters();
    Task<> printTest();

    /// Changes one record as it stands now; nothing happens when it is gone.
    void editProfile(const QUuid &id, const std::function<void(SenderProfile &)> &edit);
    void editBox(const QUuid &id, const std::function<void(BoxProfile &)> &edit);
    bool isDefaultProfile(const QUuid &id) const;
    bool canRemoveProfile() const { return m_app.senders.profiles.value().size() > 1; }
    /// These ask first.
    Task<> removeProfile(QUuid id);
    Task<> removeBox(QUuid id);

private:
    template <class T>
    void store(QProperty<T> &property, const Setting<T> &setting);
    void chooseZebraQueue();
    Task<bool> confirmed(QString title, QString text, QString keep, QString remove);

    AppState &m_app;
    bool m_discovered = false;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
