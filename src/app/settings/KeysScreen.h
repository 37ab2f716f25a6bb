#pragma once

#include "app/AppState.h"
#include "core/Task.h"

#include <QFuture>
#include <QProperty>
#include <QThreadPool>

#include <functional>

namespace parcelory {

/// What a label bought now would be.
enum class PostageMode { unknown, none, test, live, practice };

struct KeyRow {
    QString name;
    bool test; ///< labels bought with it are not valid postage
    bool active;

    bool operator==(const KeyRow &) const = default;
};

/// The API keys as the window and Settings show them. The key ring may block, so it is read and written on a thread of
/// its own, one operation at a time in the order in which they were asked for: what is shown is what the last one
/// left. Lives as long as AppState.
class KeysScreen {
public:
    explicit KeysScreen(AppState &app);

    QProperty<PostageMode> mode{
        PostageMode::unknown}; ///< until the key ring has been read; practice whatever the key, where nothing is real
    QProperty<QString> statusText;   ///< the status strip's line
    QProperty<QString> settingsText; ///< the line above the list of keys
    QProperty<QList<KeyRow>> keys;
    QProperty<QString> message; ///< why a key was not taken; empty when all is well

    /// Reads everything again: another program may have changed the key ring.
    Task<> refresh();
    /// Stores or replaces a key; blanks around name and token do not belong to them.
    Task<> add(QString name, QString token);
    /// Asks first.
    Task<> remove(QString name);
    Task<> makeActive(QString name);

private:
    struct State {
        PostageMode mode = PostageMode::unknown;
        QString statusText, settingsText;
        QList<KeyRow> keys;
        QString message;
    };
    /// Changes the keys; answers why it could not, or nothing. Runs on that thread.
    using Work = std::function<QString(ShippoKeys &keys)>;

    static State read(ShippoKeys &keys);
    QFuture<State> queue(Work work);
    void show(const State &state);
    Task<> change(Work work);
    QString consequenceOfRemoving(const QString &name) const;

    AppState &m_app;
    QThreadPool m_thread; ///< one thread, so that operations keep their order
};

} // namespace parcelory
