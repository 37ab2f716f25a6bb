#pragma once

#include <QRegularExpression>
#include <QString>

#include <chrono>

namespace parcelory {

/// A run of key presses without a long pause, and what its timing tells of who types it. Pure: times come in with the
/// keys.
class ScanBurst {
public:
    using Time = std::chrono::milliseconds;

    static constexpr Time burstGap{500};  ///< a longer pause begins a new run
    static constexpr Time fastKey{50};    ///< a key sooner after the one before is fast
    static constexpr Time scannerGap{80}; ///< no scanner pauses longer within a code
    static constexpr int fewestFastKeys = 8, fewestNoiseCharacters = 10, mostCharacters = 300;

    /// `linkHost`: host of the invoice QR codes; a code is the host, "/i" and the invoice's digits.
    explicit ScanBurst(const QString &linkHost);

    /// Notes that a key goes down; true when it follows a buffered key so closely that a person hardly can. A key that
    /// ends a code belongs to the run before it, however late.
    bool beat(Time now, bool isEnd = false);
    /// A key at this moment would come later than a scanner's next.
    bool pausedBy(Time now) const { return now - m_lastKey > scannerGap; }
    /// Takes the key's characters into the run.
    void add(const QString &characters);
    void clear();

    const QString &text() const { return m_text; }
    int keys() const { return m_keys; }
    /// Enough keys without a breath, and fast ones on average: a machine.
    bool wasFast() const;
    bool holdsLink() const { return m_link.match(m_text).hasMatch(); }
    /// The link stands in what came since the last pause that is too long for a scanner.
    bool scannedLink() const { return m_link.match(m_text.mid(m_runStart)).hasMatch(); }
    /// The key noted last began such a run.
    bool beganRun() const { return m_runStart == m_text.size(); }

    /// Letters, digits, punctuation and symbols; a space or a control character never belongs to a code.
    static bool isBufferable(const QString &characters);

private:
    QRegularExpression m_link;
    QString m_text;
    qsizetype m_runStart = 0; ///< in m_text, after the last pause longer than scannerGap
    int m_keys = 0;
    int m_runKeys = 0; ///< those since m_runStart
    Time m_lastKey{0}, m_start{0}, m_runBegan{0};
};

} // namespace parcelory
