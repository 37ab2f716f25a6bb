#include "devices/ScanBurst.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

ScanBurst::ScanBurst(const QString &linkHost) : m_link(u"(?i)%1/i\\d+"_s.arg(QRegularExpression::escape(linkHost))) {}

bool ScanBurst::beat(Time now, bool isEnd)
{
    const Time gap = now - m_lastKey;
    if (gap > burstGap || gap < Time(0)) { // a clock that was set back also starts a new run
        clear();
        m_start = m_runBegan = now;
    } else if (gap > scannerGap && !isEnd) {
        m_runStart = m_text.size();
        m_runKeys = 0;
        m_runBegan = now;
    }
    m_lastKey = now;
    return m_keys > 0 && gap < fastKey;
}

void ScanBurst::add(const QString &characters)
{
    m_text += characters;
    ++m_keys;
    ++m_runKeys;
    if (const qsizetype tooMany = m_text.size() - mostCharacters; tooMany > 0) {
        m_text.remove(0, tooMany);
        m_runStart = std::max<qsizetype>(0, m_runStart - tooMany);
    }
}

void ScanBurst::clear()
{
    m_text.clear();
    m_keys = 0;
    m_runKeys = 0;
    m_runStart = 0;
    m_start = m_runBegan = m_lastKey;
}

bool ScanBurst::wasFast() const
{
    if (m_runKeys < fewestFastKeys) // m_keys is never smaller
        return false;
    // Averages without a division: of all keys, or of the keys since the last pause.
    return m_lastKey - m_start < fastKey * m_keys || m_lastKey - m_runBegan < fastKey * m_runKeys;
}

bool ScanBurst::isBufferable(const QString &characters)
{
    const QList<uint> codes = characters.toUcs4();
    return !codes.isEmpty() && std::ranges::all_of(codes, [](uint code) {
        return QChar::isLetterOrNumber(code) || QChar::isPunct(code) || QChar::isSymbol(code);
    });
}

} // namespace parcelory
