#pragma once

#include "app/AppState.h"
#include "core/Observable.h"
#include "core/SerialQueue.h"
#include "core/Task.h"

#include <QHash>

#include <functional>

namespace parcelory {

/// The kind of label that a purchase would produce now.
enum class PostageMode { unknown, none, test, live, practice };

struct KeyRow {
    QString name;
    bool test; ///< labels bought with it are not valid postage
    bool active;

    bool operator==(const KeyRow &) const = default;
};

/// The API keys as the window and Settings show them. The key ring may block, so a dedicated thread reads and writes
/// it, one operation at a time in request order; the display shows the state after the last operation. Lives as long as
/// AppState.
class KeysScreen : public Observable {
public:
    explicit KeysScreen(AppState &app);

    Observed<PostageMode> mode{this,
                               PostageMode::unknown}; ///< until the key ring is read; practice on the practice desk
    Observed<QString> statusText{this};               ///< the status strip's line
    Observed<QString> settingsText{this};             ///< the line above the list of keys
    Observed<QList<KeyRow>> keys{this};
    Observed<QString> message{this};     ///< why a key was rejected; otherwise empty
    Observed<QString> removedName{this}; ///< of the removed key that the clerk wants back: only its token is missing

    /// Reads the active key and the list again.
    Task<> refresh();
    /// The same when the window comes to the front, because another program may have changed the key
    /// ring. Not after a read that the user refused: the system's question would come again at each activation.
    Task<> refreshAtActivation();
    /// Stores or replaces a key; trims name and token.
    Task<> add(QString name, QString token);
    /// Asks the clerk to confirm first.
    Task<> remove(QString name);
    Task<> makeActive(QString name);

private:
    struct State {
        PostageMode mode = PostageMode::unknown;
        QString statusText, settingsText;
        QList<KeyRow> keys;
        QString message;
        bool isRefused = false; ///< there is an active key, but its token cannot be read
    };
    /// Changes the keys and returns an error text, empty on success. Runs on the queue's thread.
    using Work = std::function<QString(ShippoKeys &keys)>;

    State read(ShippoKeys &keys);
    Task<State> run(Work work);
    void show(const State &state);
    Task<> change(Work work);
    QString consequenceOfRemoving(const QString &name) const;

    AppState &m_app;
    QHash<QString, bool> m_isTest; ///< by name, of the keys that have been read; used on the queue's thread only
    bool m_isRefused = false;
    SerialQueue m_queue;
};

} // namespace parcelory
