#include "app/settings/KeysScreen.h"

#include "app/AppState.h"
#include "carrier/ShippoKeys.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

KeysScreen::KeysScreen(AppState &app) : m_app(app)
{
    show({}); // so that the practice desk shows its mode at once
}

KeysScreen::State KeysScreen::read(ShippoKeys &keys)
{
    const QString token = keys.activeToken().value_or(QString()); // first: it migrates an older version's key
    const QString active = keys.activeName();
    State state{.mode = PostageMode::none,
                .statusText = keys.statusText(token),
                .settingsText = keys.settingsText(token),
                .isRefused = token.isEmpty() && !active.isEmpty()};
    if (!token.isEmpty())
        state.mode = ShippoKeys::isTest(token) ? PostageMode::test : PostageMode::live;
    for (const QString &name : keys.names()) {
        const bool isActive = name == active;
        const bool isKnown = !isActive && m_isTest.contains(name);
        const QString its = isActive ? token : isKnown ? QString() : keys.token(name).value_or(QString());
        if (!its.isEmpty())
            m_isTest[name] = ShippoKeys::isTest(its);
        state.keys.append({name, m_isTest.value(name), isActive});
    }
    return state;
}

Task<KeysScreen::State> KeysScreen::run(Work work)
{
    co_return co_await m_queue.run([this, work = std::move(work)] {
        Preferences &names = m_app.platform.preferences;
        const bool areRead = names.synchronize(); // another program may have added a key
        const QString message = work(m_app.keys);
        State state = read(m_app.keys);
        const bool areStored = names.synchronize() && areRead;
        state.message = message.isEmpty() && !areStored ? settings::notStored : message;
        return state;
    });
}

void KeysScreen::show(const State &state)
{
    if (keys.value() != state.keys)
        m_app.keyChanges = m_app.keyChanges + 1;
    const bool practice = m_app.platform.practice;
    keys = state.keys;
    settingsText = state.settingsText;
    statusText = practice ? u"Practice — nothing is sent, charged or printed"_s : state.statusText;
    mode = practice ? PostageMode::practice : state.mode;
    m_isRefused = state.isRefused;
}

Task<> KeysScreen::refreshAtActivation()
{
    if (!m_isRefused)
        co_await refresh();
}

Task<> KeysScreen::refresh()
{
    const State state = co_await run([](ShippoKeys &) { return QString(); });
    show(state);
}

Task<> KeysScreen::change(Work work)
{
    message = QString();                     // clear first so that an identical message is announced again
    m_app.keyChanges = m_app.keyChanges + 1; // now already: a slow key ring may change long before it responds
    const State state = co_await run([this, work = std::move(work)](ShippoKeys &keys) {
        m_isTest.clear(); // a key may be replaced
        return work(keys);
    });
    message = state.message.isEmpty() ? QString() : m_app.recorded(u"API Keys"_s, AppError(state.message), Popup::no);
    show(state);
}

Task<> KeysScreen::add(QString name, QString token)
{
    name = name.trimmed();
    token = token.trimmed();
    if (name.isEmpty() || token.isEmpty()) {
        message = u"A key needs a name and its token."_s;
        co_return;
    }
    if (name.size() > ShippoKeys::longestName) {
        message = ShippoKeys::tooLong;
        co_return;
    }
    removedName = QString();
    co_await change(
        [name, token](ShippoKeys &keys) { return keys.store(token, name) ? QString() : ShippoKeys::notKept; });
}

/// Names the key that becomes active instead, so that a live key in place of a test key is no surprise.
QString KeysScreen::consequenceOfRemoving(const QString &name) const
{
    const QList<KeyRow> &all = keys.value();
    const auto isIt = [&name](const KeyRow &key) { return key.name == name; };
    const bool wasActive = std::ranges::any_of(all, [&](const KeyRow &key) { return isIt(key) && key.active; });
    if (!wasActive)
        return {};
    const auto next = std::ranges::find_if_not(all, isIt);
    if (next == all.end())
        return u" No key remains, so no label can be bought."_s;
    return (next->test ? u" “%1” becomes active — TEST key, labels are free and not valid postage."_s
                       : u" “%1” becomes active — LIVE key, labels cost real money."_s)
        .arg(next->name);
}

Task<> KeysScreen::remove(QString name)
{
    const Question question{.title = u"Remove “%1”?"_s.arg(name),
                            .text = u"Its token is erased. To use the key again, you must enter it again."_s +
                                    consequenceOfRemoving(name),
                            .choices = {u"Keep Key"_s, u"Remove Key"_s}};
    const int answer = co_await m_app.platform.prompts.choose(question);
    if (answer != 1)
        co_return;
    co_await change([name](ShippoKeys &keys) {
        keys.remove(name);
        return QString();
    });
    // The token is erased, as the clerk was told: nothing keeps it for Undo.
    removedName = QString();
    m_app.lastChange.note(u"The key “%1” is removed. To undo, enter its token again."_s.arg(name), [this, name] {
        removedName = name;
        m_app.tab = MainTab::settings;
    });
}

Task<> KeysScreen::makeActive(QString name)
{
    co_await change([name](ShippoKeys &keys) {
        if (keys.names().contains(name)) // the key may have been removed meanwhile
            keys.makeActive(name);
        return QString();
    });
}

} // namespace parcelory
