#pragma once

#include <QRegularExpression>
#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace parcelory {

/// Key presses without a long pause, and which of them are a code. Reads no clock: the times come with the keys.
class ScanBurst {
public:
    using Time = std::chrono::milliseconds;

    static constexpr Time burstGap{500};    ///< a longer pause starts a new burst
    static constexpr Time finishDelay{250}; ///< a longer pause ends an invoice code without an end key
    static constexpr Time fastKey{50};      ///< a key that follows sooner is fast
    static constexpr Time runPause{80};     ///< a longer pause divides a burst into runs
    static constexpr Time machineKey{20};   ///< a person does not type several keys faster
    /// A person sometimes presses two keys nearly together, but not three.
    static constexpr int fewestKeysBeforePause = 3;
    static constexpr int fewestFastKeys = 8, fewestNoiseCharacters = 10, mostCharacters = 300;

    /// The keys of a burst that a machine typed, counted from the burst's first key.
    struct Code {
        qsizetype from = 0, to = 0;
        bool isLink = false;
        bool isLong = false; ///< an invoice code, or long enough to be reported

        bool isEmpty() const { return from == to; }
    };

    /// `linkHost`: host of the invoice QR codes; a code is the host, "/i" and the invoice's digits.
    explicit ScanBurst(const QString &linkHost);

    /// How long before `now` the last key was pressed; negative if the clock was set back.
    Time pauseAt(Time now) const { return now - m_lastKey; }
    /// Records a key press; true if it follows a buffered key faster than a person types.
    bool beat(Time now);
    /// Adds the characters of the key that was recorded last.
    void add(const QString &characters);
    void clear() { removeFirst(keys()); }
    void removeFirst(qsizetype keys);

    const QString &text() const { return m_text; }
    /// The text of the keys before `key`.
    QString textBefore(qsizetype key) const { return m_text.left(placeOf(key)); }
    qsizetype keys() const { return qsizetype(m_keys.size()); }
    Time lastKey() const { return m_lastKey; }
    Time lastPause() const { return m_pause; } ///< before the key that was recorded last
    /// True if there are enough keys and they are fast on average.
    bool wasFast() const;
    bool holdsLink() const { return m_link.match(m_text).hasMatch(); }
    /// True if the last keys are a machine's; the rest of the code may still come.
    bool mayBeMachine() const;
    /// The first key of a link of which at least the start is there.
    std::optional<qsizetype> linkStart() const;
    /// `endPause`: the pause before the end key.
    Code code(std::optional<Time> endPause = {}) const;

    /// Letters, digits, punctuation and symbols; a space or a control character never belongs to a code.
    static bool isBufferable(const QString &characters);

private:
    struct Key {
        Time pause;       ///< before this key
        qsizetype length; ///< of its text
    };
    struct Run {
        qsizetype from, to;
    };

    qsizetype placeOf(qsizetype key) const;
    qsizetype keyAt(qsizetype place) const;
    std::vector<Run> runs() const;
    bool isFaster(qsizetype from, qsizetype to, Time average, std::optional<Time> endPause = {}) const;
    bool isMachine(const Run &run) const;
    bool continues(const Run &run, Time average, std::optional<Time> endPause) const;
    Code link(qsizetype from, qsizetype to) const;
    Code noise(std::optional<Time> endPause) const;
    qsizetype withoutTypedKeys(qsizetype from, qsizetype to) const;

    QRegularExpression m_link, m_wholeLink;
    QString m_text;
    std::vector<Key> m_keys;
    Time m_lastKey{0}, m_lastAdded{0}, m_pause{0}, m_start{0};
};

} // namespace parcelory
