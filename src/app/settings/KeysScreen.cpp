#include "app/settings/KeysScreen.h"

#include <QtConcurrentRun>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

KeysScreen::KeysScreen(AppState &app) : m_app(app)
{
    m_thread.setMaxThreadCount(1);
    show({}); // the practice desk is recognised from the first moment
}

KeysScreen::State KeysScreen::read(ShippoKeys &keys)
{
    State state{.mode = PostageMode::none};
    const QString token = keys.activeToken().value_or(QString()); // gives an old key its name, so it comes first
    if (!token.isEmpty())
        state.mode = ShippoKeys::isTest(token) ? PostageMode::test : PostageMode::live;
    state.statusText = keys.statusText();
    state.settingsText = keys.settingsText();
    const QString active = keys.activeName();
    for (const QString &name : keys.names())
        state.keys.append({name, ShippoKeys::isTest(keys.token(name).value_or(QString())), name == active});
    return state;
}

QFuture<KeysScreen::State> KeysScreen::queue(Work work)
{
    return QtConcurrent::run(&m_thread, [&keys = m_app.keys, work = std::move(work)] {
        const QString message = work(keys);
        State state = read(keys);
        state.message = message;
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
}

Task<> KeysScreen::refresh()
{
    auto reading = queue([](ShippoKeys &) { return QString(); });
    const State state = co_await reading;
    show(state);
}

Task<> KeysScreen::change(Work work)
{
    message = QString();                     // the same refusal twice is news twice
    m_app.keyChanges = m_app.keyChanges + 1; // already now: a slow key ring may have changed long before it answers
    auto changing = queue(std::move(work));
    const State state = co_await changing;
    message = state.message;
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
    auto adding =
        change([name, token](ShippoKeys &keys) { return keys.store(token, name) ? QString() : ShippoKeys::notKept; });
    co_await adding;
}

/// Which key will be used instead; a live one in the place of a test key must not come as a surprise.
QString KeysScreen::consequenceOfRemoving(const QString &name) const
{
    const QList<KeyRow> &all = keys.value();
    const auto isIt = [&name](const KeyRow &key) { return key.name == name; };
    const bool wasActive = std::ranges::any_of(all, [&](const KeyRow &key) { return isIt(key) && key.active; });
    if (!wasActive)
        return {};
    const auto next = std::ranges::find_if_not(all, isIt);
    if (next == all.end())
        return u" No key is left then, and no label can be bought."_s;
    return (next->test ? u" “%1” becomes active — TEST key, labels are free and not valid postage."_s
                       : u" “%1” becomes active — LIVE key, labels cost real money."_s)
        .arg(next->name);
}

Task<> KeysScreen::remove(QString name)
{
    const Question question{.title = u"Remove “%1”?"_s.arg(name),
                            .text = u"Its token is erased; to use the key again it has to be entered again."_s +
                                    consequenceOfRemoving(name),
                            .choices = {u"Keep Key"_s, u"Remove Key"_s}};
    const int answer = co_await m_app.platform.prompts.choose(question);
    if (answer != 1)
        co_return;
    auto removing = change([name](ShippoKeys &keys) {
        keys.remove(name);
        return QString();
    });
    co_await removing;
}

Task<> KeysScreen::makeActive(QString name)
{
    auto choosing = change([name](ShippoKeys &keys) {
        if (keys.names().contains(name)) // it may have been removed meanwhile
            keys.makeActive(name);
        return QString();
    });
    co_await choosing;
}

} // namespace parcelory
