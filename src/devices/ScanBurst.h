#pragma once

#include <QRegularExpression>
#include <QString>

#include <chrono>

namespace parcelory {

/// A run of key presses without a long pause, and whether its timing shows a scanner or a person. Reads no clock: the
/// times come with the keys.
class ScanBurst {
public:
    using Time = std::chrono::milliseconds;

    static constexpr Time burstGap{500};  ///< a longer pause starts a new run
    static constexpr Time fastKey{50};    ///< a key that follows sooner is fast
    static constexpr Time scannerGap{80}; ///< no scanner pauses longer within a code
    static constexpr int fewestFastKeys = 8, fewestNoiseCharacters = 10, mostCharacters = 300;

    /// `linkHost`: host of the invoice QR codes; a code is the host, "/i" and the invoice's digits.
    explicit ScanBurst(const QString &linkHost);

    /// Records a key press; true if it follows a buffered key faster than a person types. A key that ends a code
    /// belongs to the run before it, unless the pause exceeds burstGap.
    bool beat(Time now, bool isEnd = false);
    /// True if a scanner would have sent its next key by now.
    bool pausedBy(Time now) const { return now - m_lastKey > scannerGap; }
    /// Adds the key's characters to the run.
    void add(const QString &characters);
    void clear();

    const QString &text() const { return m_text; }
    int keys() const { return m_keys; }
    /// True if there are enough keys and they are fast on average: a machine sent them.
    bool wasFast() const;
    bool holdsLink() const { return m_link.match(m_text).hasMatch(); }
    /// True if the link came after the last pause that is too long for a scanner.
    bool scannedLink() const { return m_link.match(m_text.mid(m_runStart)).hasMatch(); }
    /// True if the last recorded key is the first key after such a pause.
    bool beganRun() const { return m_runStart == m_text.size(); }

    /// Letters, digits, punctuation and symbols; a space or a control character never belongs to a code.
    static bool isBufferable(const QString &characters);

private:
    QRegularExpression m_link;
    QString m_text;
    qsizetype m_runStart = 0; ///< in m_text, after the last pause longer than scannerGap
    int m_keys = 0;
    int m_runKeys = 0; ///< keys since m_runStart
    Time m_lastKey{0}, m_start{0}, m_runBegan{0};
};

} // namespace parcelory
