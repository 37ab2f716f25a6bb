#include "devices/zpl/ZplScanner.h"

#include <algorithm>
#include <cmath>

namespace parcelory {

namespace {

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

} // namespace

QList<QByteArray> ZplCommand::parameters() const
{
    QList<QByteArray> values = rest.split(delimiter);
    for (QByteArray &value : values)
        value = value.trimmed();
    return values;
}

char ZplParameters::letter(qsizetype at, char otherwise) const
{
    const QByteArray value = text(at);
    return value.isEmpty() ? otherwise : upper(value[0]);
}

int ZplParameters::number(qsizetype at, int otherwise, int least, int most) const
{
    return int(std::clamp(std::trunc(decimal(at, otherwise)), double(least), double(most)));
}

double ZplParameters::decimal(qsizetype at, double otherwise) const
{
    // Only the digits count: printers stop reading a number at the first other sign.
    const QByteArray value = text(at);
    qsizetype end = value.startsWith('-') || value.startsWith('+') ? 1 : 0;
    while (end < value.size() && ((value[end] >= '0' && value[end] <= '9') || value[end] == '.'))
        ++end;
    bool isNumber = false;
    const double number = value.first(end).toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? number : otherwise;
}

std::optional<ZplCommand> ZplScanner::next()
{
    while (m_at < m_bytes.size() && !isPrefix(m_at))
        ++m_at;
    if (m_at + 1 >= m_bytes.size())
        return std::nullopt;
    ZplCommand command{.prefix = m_bytes[m_at] == m_caret ? '^' : '~', .delimiter = m_delimiter};
    ++m_at;
    const bool isFont = command.prefix == '^' && upper(m_bytes[m_at]) == 'A';
    const qsizetype begin = std::min(m_at + (isFont ? 1 : 2), m_bytes.size());
    command.name = m_bytes.sliced(m_at, begin - m_at).toUpper();
    m_at = begin;
    if (command.name == "CC" || command.name == "CD" || command.name == "CT") {
        change(command.name);
        return command;
    }
    qsizetype end = endOfBinary(command.name, begin).value_or(-1);
    if (end < 0)
        end = command.name == "FD" || command.name == "FV" || command.name == "FX" ? endOfField(begin)
                                                                                   : endOfParameters(begin);
    command.rest = m_bytes.sliced(begin, end - begin);
    m_at = end;
    return command;
}

bool ZplScanner::isPrefix(qsizetype at) const
{
    return m_bytes[at] == m_caret || m_bytes[at] == m_tilde;
}

/// A text may hold a tilde that starts no command.
qsizetype ZplScanner::endOfField(qsizetype from) const
{
    for (; from < m_bytes.size() && m_bytes[from] != m_caret; ++from) {
        if (m_bytes[from] == m_tilde && from + 2 < m_bytes.size() && isLetter(m_bytes[from + 1]) &&
            isLetter(m_bytes[from + 2]))
            break;
    }
    return from;
}

qsizetype ZplScanner::endOfParameters(qsizetype from) const
{
    while (from < m_bytes.size() && !isPrefix(from))
        ++from;
    return from;
}

/// The end of a picture in bytes, which may be any: only their number tells where the next command is.
std::optional<qsizetype> ZplScanner::endOfBinary(const QByteArray &name, qsizetype from) const
{
    const bool isField = name == "GF", isFile = name == "DY";
    if (!isField && !isFile)
        return std::nullopt;
    QList<QByteArray> values;
    const int parameters = isField ? 4 : 5;
    for (qsizetype begin = from; values.size() < parameters; begin = from + 1, from = begin) {
        while (from < m_bytes.size() && m_bytes[from] != m_delimiter && m_bytes[from] != m_caret)
            ++from;
        if (from >= m_bytes.size() || m_bytes[from] == m_caret)
            return std::nullopt;
        values += m_bytes.sliced(begin, from - begin).trimmed().toUpper();
    }
    const QByteArray kind = values[isField ? 0 : 1];
    if (kind != "B" && kind != "C" && kind != "P")
        return std::nullopt;
    const qsizetype count = std::max<qsizetype>(values[isField ? 1 : 3].toLongLong(), 0);
    return from + std::min(count, m_bytes.size() - from);
}

/// The label chooses another sign for the start of a command or between parameters.
void ZplScanner::change(const QByteArray &name)
{
    if (m_at >= m_bytes.size())
        return;
    const char sign = m_bytes[m_at];
    ++m_at;
    (name == "CC" ? m_caret : name == "CT" ? m_tilde : m_delimiter) = sign;
}

} // namespace parcelory
