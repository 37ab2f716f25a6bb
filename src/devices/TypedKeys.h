#pragma once

#include "core/ports/Keyboard.h"

#include <QString>

#include <deque>
#include <vector>

namespace parcelory {

/// The keys of a burst that wait, and those that a text field received: both can still be taken out if they turn out to
/// be a code's.
class TypedKeys {
public:
    explicit TypedKeys(Keyboard &keyboard) : m_keyboard(keyboard) {}

    /// A key of a burst. `after` is the number of the burst's key that it is or follows; `before` of the one that it is
    /// or precedes. They differ for a blank, which is no key of a burst.
    struct Key {
        qsizetype after = 0, before = 0;
        QString text;
    };

    bool isHolding() const { return !m_held.empty(); }
    /// The keyboard holds the current key.
    void hold(const Key &key) { m_held.push_back(key); }
    /// The focused text field receives the current key.
    void show(const Key &key);
    /// Delivers the held keys before key `to` of the burst, in order.
    void showHeld(qsizetype to);
    /// Something else changes the fields now.
    void interrupt() { ++m_interruptions; }

    /// Takes the burst's keys `from` … `to` - 1 out of the fields and drops those that are held; delivers all other
    /// held keys.
    void takeOut(qsizetype from, qsizetype to);
    /// The burst's first keys are no longer part of it.
    void removeFirst(qsizetype keys);
    /// The burst is over; no key of it can be taken out.
    void clear();

private:
    struct Shown {
        Key key;
        int interruptions;
        FieldState before;
    };

    void showNext();
    void takeBack(std::vector<Shown>::const_iterator from, std::vector<Shown>::const_iterator to);

    Keyboard &m_keyboard;
    std::deque<Key> m_held;
    std::vector<Shown> m_shown;
    int m_interruptions = 0;
};

} // namespace parcelory
