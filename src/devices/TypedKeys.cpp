#include "devices/TypedKeys.h"

#include <algorithm>
#include <utility>

namespace parcelory {

namespace {

/// True if nothing but typing these characters can have led from one state to the other. A field may refuse characters
/// or change their case.
bool isTyped(const FieldState &before, const FieldState &now, const QString &typed)
{
    if (now.text == before.text)
        return true;
    const auto [start, end] = std::minmax(before.cursor, before.anchor);
    const qsizetype rest = before.text.size() - end, length = now.text.size() - start - rest;
    if (length < 0 || !now.text.startsWith(before.text.left(start)) || !now.text.endsWith(before.text.right(rest)))
        return false;
    qsizetype found = 0;
    for (const QChar letter : now.text.mid(start, length)) {
        found = typed.indexOf(letter, found, Qt::CaseInsensitive) + 1;
        if (found == 0)
            return false;
    }
    return true;
}

} // namespace

void TypedKeys::show(const Key &key)
{
    if (FieldState before = m_keyboard.fieldState(); before.field)
        m_shown.push_back({key, m_interruptions, std::move(before)});
}

void TypedKeys::showNext()
{
    const Key key = std::move(m_held.front());
    m_held.pop_front();
    if (FieldState before = m_keyboard.releaseHeld(); before.field)
        m_shown.push_back({key, m_interruptions, std::move(before)});
}

void TypedKeys::showHeld(qsizetype to)
{
    while (isHolding() && m_held.front().after < to)
        showNext();
}

void TypedKeys::takeOut(qsizetype from, qsizetype to)
{
    const auto isInside = [=](const Key &key) { return key.after >= from && key.before < to; };
    for (auto end = m_shown.cend(); end != m_shown.cbegin();) {
        auto start = std::prev(end);
        if (isInside(start->key)) {
            // Keys in sequence, in the same field.
            while (start != m_shown.cbegin() && isInside(std::prev(start)->key) &&
                   std::prev(start)->before.field == start->before.field &&
                   std::prev(start)->interruptions == start->interruptions)
                --start;
            takeBack(start, end);
        }
        end = start;
    }
    std::erase_if(m_shown, [&](const Shown &shown) { return isInside(shown.key); });
    while (isHolding()) {
        if (isInside(m_held.front())) {
            m_held.pop_front();
            m_keyboard.dropHeld();
        } else {
            showNext();
        }
    }
}

void TypedKeys::takeBack(std::vector<Shown>::const_iterator from, std::vector<Shown>::const_iterator to)
{
    QString typed;
    std::for_each(from, to, [&](const Shown &shown) { typed += shown.key.text; });
    FieldState now = m_keyboard.stateNow(from->before);
    if (!now.field)
        return;
    if (isTyped(from->before, now, typed)) {
        FieldState state = from->before;
        if (from->interruptions != m_interruptions) { // the clerk may have moved the cursor
            const qsizetype start = std::min(state.cursor, state.anchor), added = now.text.size() - state.text.size();
            state.cursor = now.cursor > start ? std::max(start, now.cursor - added) : now.cursor;
            state.anchor = now.anchor > start ? std::max(start, now.anchor - added) : now.anchor;
        }
        m_keyboard.restore(state);
        return;
    }
    // The field has changed in between: only the characters are removed.
    const qsizetype start = std::min(from->before.cursor, from->before.anchor), length = typed.size();
    const auto isAt = [&](qsizetype place) { return place >= 0 && now.text.mid(place, length) == typed; };
    const qsizetype atCursor = now.cursor - length;
    const qsizetype place = isAt(start) ? start : isAt(atCursor) ? atCursor : now.text.lastIndexOf(typed);
    if (place < 0)
        return;
    now.text.remove(place, typed.size());
    for (qsizetype *point : {&now.cursor, &now.anchor})
        *point -= std::clamp<qsizetype>(*point - place, 0, typed.size());
    m_keyboard.restore(now);
}

void TypedKeys::removeFirst(qsizetype keys)
{
    std::erase_if(m_shown, [keys](const Shown &shown) { return shown.key.after < keys; });
    for (Shown &shown : m_shown) {
        shown.key.after -= keys;
        shown.key.before -= keys;
    }
}

void TypedKeys::clear()
{
    while (isHolding())
        showNext();
    m_shown.clear();
}

} // namespace parcelory
