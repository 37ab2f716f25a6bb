#include "devices/ScanBurst.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

ScanBurst::ScanBurst(const QString &linkHost)
    : m_link(u"(?i)%1/i\\d+"_s.arg(QRegularExpression::escape(linkHost))),
      // A scanner may send a symbology identifier such as "]Q1" first.
      m_wholeLink(u"(?i)(?:\\][a-z]\\d)?(?:https?://)?(?:www\\.)?"_s + m_link.pattern().mid(4))
{
}

bool ScanBurst::beat(Time now)
{
    m_pause = pauseAt(now);
    m_lastKey = now;
    if (m_keys.empty())
        m_start = now;
    return !m_keys.empty() && m_pause < fastKey;
}

void ScanBurst::add(const QString &characters)
{
    m_text = (m_text + characters).right(mostCharacters);
    m_keys.push_back({m_lastKey - m_lastAdded, characters.size()}); // a blank in between is no pause's end
    m_lastAdded = m_lastKey;
}

void ScanBurst::removeFirst(qsizetype keys)
{
    m_text.remove(0, placeOf(keys));
    m_keys.erase(m_keys.begin(), m_keys.begin() + keys);
    m_start = m_lastAdded;
    for (qsizetype key = 1; key < this->keys(); ++key)
        m_start -= m_keys[size_t(key)].pause;
}

bool ScanBurst::wasFast() const
{
    return keys() >= fewestFastKeys && m_lastKey - m_start < fastKey * keys(); // the average without a division
}

/// The place in the text where the key's characters begin. The text of the first keys of a long burst is not kept.
qsizetype ScanBurst::placeOf(qsizetype key) const
{
    qsizetype place = m_text.size();
    for (qsizetype later = keys(); later > key; --later)
        place -= m_keys[size_t(later - 1)].length;
    return std::max<qsizetype>(place, 0);
}

qsizetype ScanBurst::keyAt(qsizetype place) const
{
    qsizetype key = keys(), start = m_text.size();
    while (key > 0 && start > place)
        start -= m_keys[size_t(--key)].length;
    return key;
}

std::vector<ScanBurst::Run> ScanBurst::runs() const
{
    std::vector<Run> all;
    for (qsizetype key = 0; key < keys(); ++key) {
        if (all.empty() || m_keys[size_t(key)].pause > runPause)
            all.push_back({key, key});
        all.back().to = key + 1;
    }
    return all;
}

/// True if the keys follow one another faster than this on average; a pause before an end key counts, too.
bool ScanBurst::isFaster(qsizetype from, qsizetype to, Time average, std::optional<Time> endPause) const
{
    Time sum = endPause.value_or(Time(0));
    for (qsizetype key = from + 1; key < to; ++key)
        sum += m_keys[size_t(key)].pause;
    const qsizetype pauses = to - from - 1 + (endPause ? 1 : 0);
    return pauses > 0 && sum < average * pauses;
}

bool ScanBurst::isMachine(const Run &run) const
{
    return run.to - run.from >= fewestFastKeys && isFaster(run.from, run.to, fastKey);
}

/// True if the run may be the rest of a code that a pause has interrupted.
bool ScanBurst::continues(const Run &run, Time average, std::optional<Time> endPause) const
{
    const bool ends = run.to == keys() && endPause && *endPause < average;
    return isFaster(run.from, run.to, average, ends ? endPause : std::nullopt);
}

ScanBurst::Code ScanBurst::code(std::optional<Time> endPause) const
{
    if (keys() == 0)
        return {};
    if (const auto found = m_wholeLink.match(m_text); found.hasMatch())
        return link(keyAt(found.capturedStart()), keyAt(found.capturedEnd() - 1) + 1);
    return noise(endPause);
}

/// The link's own keys may have any pauses. What a machine typed directly before and after them belongs to the code.
ScanBurst::Code ScanBurst::link(qsizetype from, qsizetype to) const
{
    const std::vector<Run> all = runs();
    for (auto run = all.rbegin(); run != all.rend(); ++run) {
        if (run->from < from && run->to >= from && isMachine({run->from, from}))
            from = run->from;
    }
    for (const Run &run : all) {
        if (run.from < to && run.to > to)
            to = run.to;
        else if (run.from == to && continues(run, machineKey, {}))
            to = run.to;
    }
    return {.from = from, .to = to, .isLink = true, .isLong = true};
}

/// The first keys that only a machine types so fast. A pause inside them is a machine's if it types fast before and
/// after.
ScanBurst::Code ScanBurst::noise(std::optional<Time> endPause) const
{
    const std::vector<Run> all = runs();
    for (auto run = all.begin(); run != all.end(); ++run) {
        Run whole = *run;
        const bool quick = whole.to - whole.from >= fewestKeysBeforePause && isFaster(whole.from, whole.to, machineKey);
        if (!quick && !isMachine(whole))
            continue;
        for (auto next = run + 1; next != all.end() && continues(*next, quick ? machineKey : fastKey, endPause); ++next)
            whole.to = next->to;
        whole.from = withoutTypedKeys(whole.from, run->to);
        if (whole.to - whole.from < fewestFastKeys)
            continue;
        qsizetype characters = 0;
        for (qsizetype key = whole.from; key < whole.to; ++key)
            characters += m_keys[size_t(key)].length;
        return {.from = whole.from, .to = whole.to, .isLink = false, .isLong = characters >= fewestNoiseCharacters};
    }
    return {};
}

/// Leaves out the keys before a code that a person typed: they are much slower than the second half of the run.
qsizetype ScanBurst::withoutTypedKeys(qsizetype from, qsizetype to) const
{
    Time longest{0};
    for (qsizetype key = from + (to - from + 1) / 2; key < to; ++key)
        longest = std::max(longest, m_keys[size_t(key)].pause);
    while (from + 1 < to && m_keys[size_t(from + 1)].pause >= std::max(machineKey, 2 * longest))
        ++from;
    return from;
}

bool ScanBurst::mayBeMachine() const
{
    const std::vector<Run> all = runs();
    return !all.empty() && all.back().to - all.back().from >= fewestKeysBeforePause &&
           isFaster(all.back().from, all.back().to, machineKey);
}

std::optional<qsizetype> ScanBurst::linkStart() const
{
    const auto found = m_wholeLink.match(m_text, 0, QRegularExpression::PartialPreferCompleteMatch);
    return found.hasMatch() || found.hasPartialMatch() ? std::optional(keyAt(found.capturedStart())) : std::nullopt;
}

bool ScanBurst::isBufferable(const QString &characters)
{
    const QList<uint> codes = characters.toUcs4();
    return !codes.isEmpty() && std::ranges::all_of(codes, [](uint code) {
        return QChar::isLetterOrNumber(code) || QChar::isPunct(code) || QChar::isSymbol(code);
    });
}

} // namespace parcelory
