#pragma once

#include "app/AppState.h"
#include "app/preview/LabelPreview.h"
#include "core/Observable.h"
#include "core/Task.h"

#include <QProperty>

#include <functional>
#include <vector>

namespace parcelory {

/// Result of the last printer operation.
struct PrinterMessage {
    QString text;
    bool ok = true;             ///< false shows it as a warning
    QString replacedQueue = {}; ///< the label printer that undoReplacement() chooses again; empty: nothing to undo

    bool operator==(const PrinterMessage &) const = default;
};

/// The Settings screen, except for the API keys. There is no Save: every change is stored at once. Lives as long as
/// AppState.
class SettingsScreen : public Observable {
public:
    explicit SettingsScreen(AppState &app);

    // Printer queue names; empty means that no queue is chosen.
    Observed<QStringList> queues{this}, zebraQueues{this}; ///< as last discovered
    Observed<bool> showAllPrinters{this, false};           ///< offers every queue for labels
    Observed<QString> zebraQueue{this};
    Observed<QString> documentQueue{this}; ///< empty: documents open in the viewer
    Observed<bool> rotate180{this, true};
    Observed<PrinterMessage> printerMessage{this};
    LabelPreview testLabel; ///< after Print Test
    Observed<bool> busy{this, false};

    Observed<bool> showAddressSidebar{this, true}; ///< beside the label form

    // Used if a sender profile leaves these blank.
    Observed<QString> fallbackEmail{this}, fallbackPhone{this};

    /// Tells the clerk if settings cannot be stored, once. At the start, and after each change on this screen.
    Task<> checkStorage();

    QStringList labelPrinterChoices() const;
    /// "— no Zebra detected —" once discovery found no label printer; otherwise empty.
    QString zebraHint() const;
    /// A chosen queue's menu title, with a note if the system does not list the queue now.
    QString queueTitle(const QString &queue) const;

    /// Discovers the queues. If the chosen label printer is not a Zebra queue, chooses the first Zebra queue instead.
    /// If the print system does not answer, nothing changes.
    Task<> refreshPrinters();
    void chooseLabelQueue(const QString &queue);
    /// Takes back the label printer that discovery replaced.
    void undoReplacement();
    /// Prints on the label printer as it is chosen now, and watches that one.
    Task<> printTest();

    /// Edits the current version of a record; does nothing if the record is gone.
    void editProfile(const QUuid &id, const std::function<void(SenderProfile &)> &edit);
    void editBox(const QUuid &id, const std::function<void(BoxProfile &)> &edit);
    bool isDefaultProfile(const QUuid &id) const;
    bool canRemoveProfile() const { return m_app.senders.profiles.value().size() > 1; }
    /// Both ask the clerk to confirm first.
    Task<> removeProfile(QUuid id);
    Task<> removeBox(QUuid id);

private:
    template <class T>
    void store(QProperty<T> &property, const Setting<T> &setting);
    void chooseZebraQueue();
    void clearPrinterMessage();
    Task<bool> confirmed(QString title, QString text, QString keep, QString remove);

    AppState &m_app;
    bool m_discovered = false;
    bool m_mustCheckStorage = false;
    bool m_isCheckingStorage = false;
    bool m_isStorageTold = false;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
