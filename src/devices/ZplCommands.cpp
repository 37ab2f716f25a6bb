#include "devices/ZplCommands.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>
#include <string_view>
#include <utility>

namespace parcelory::Zpl {
using namespace Qt::StringLiterals;

namespace {

/// Commands by their two letters; a printer takes many of them with ^ and with ~. Each changes a setting that outlives
/// the label, or stops the printer or its other jobs.
constexpr std::string_view lasting[] = {
    "JU", "JR", "JB", "JC", "JL", "JG", "JX", "JA", "JJ", "JI", "JD", "JE", "JQ", "JT", // settings, resets, modes
    "PP", "JP",                                                                         // pauses, cancels
    "MP", "MA", "JH", "JS", "JW", "SC", "SI", "ST", "SX", "SQ", "SR", "SS", "RO", "ZZ", // sensors, ports, counters
    "KN", "KP", "KL", "KD", "KV",                                                       // name, password, language
    "NB", "NC", "ND", "NI", "NN", "NP", "NR", "NS", "NT", "NW",                         // wired network
    "WA", "WE", "WI", "WK", "WL", "WP", "WR", "WS", "WX",                               // wireless network
    "TO", "CM"}; // copies files, renames memories

/// Commands that write or delete a file. Lasting unless the file is in R:, which is emptied when the printer is
/// switched off, and which is meant if no memory is named.
constexpr std::string_view storing[] = {"DB", "DE", "DF", "DG", "DS", "DT", "DU", "DY", "ID", "IS"};

/// Commands that change the language or a character of it, and the usual value. After another value, the rest of the
/// label cannot be read here.
struct Character {
    std::string_view name;
    char usual;
};
constexpr Character characters[] = {{"CC", '^'}, {"CT", '~'}, {"CD", ','}, {"SZ", '2'}};

bool isBlank(char c)
{
    return c >= 0 && c <= ' ';
}

template <class Names>
bool isAmong(const Names &names, std::string_view name)
{
    return std::ranges::find(names, name) != std::end(names);
}

/// Reads a label from command to command.
class Reader {
public:
    explicit Reader(const QByteArray &zpl) : m_zpl(zpl.constData(), size_t(zpl.size())) {}

    QStringList findings()
    {
        if (m_zpl.starts_with("\xEF\xBB\xBF"))
            m_at = 3;
        while (m_at < m_zpl.size() && isBlank(m_zpl[m_at]))
            ++m_at;
        if (m_zpl.substr(m_at).starts_with("CT~")) // as print drivers begin
            m_at += 3;
        takeText();
        while (m_at < m_zpl.size())
            takeCommand();
        return m_found;
    }

private:
    void report(std::string_view text)
    {
        constexpr size_t longest = 24;
        constexpr qsizetype most = 5;
        const std::string_view begin = text.substr(0, longest);
        const QString shown = QString::fromLatin1(begin.data(), qsizetype(begin.size())).simplified();
        if (m_found.size() < most && !m_found.contains(shown))
            m_found += shown;
    }
    /// Moves to the next command and returns what is in between.
    std::string_view skip()
    {
        const size_t from = std::exchange(m_at, std::min(m_zpl.find_first_of("^~", m_at), m_zpl.size()));
        return m_zpl.substr(from, m_at - from);
    }
    /// Text outside a label: printers read other languages there.
    void takeText()
    {
        const std::string_view text = skip();
        if (!std::ranges::all_of(text, isBlank))
            report(text);
    }
    /// Skips a graphic in bytes, which may look like commands: its parameters, then as many bytes as one of them says.
    void skipBytes(size_t sizeParameter, size_t parameters)
    {
        size_t end = m_at, size = 0;
        for (size_t parameter = 0; parameter < parameters; ++parameter) {
            const size_t comma = m_zpl.find(',', end);
            if (comma == m_zpl.npos)
                return;
            if (parameter == sizeParameter)
                std::from_chars(m_zpl.data() + end, m_zpl.data() + comma, size);
            end = comma + 1;
        }
        m_at = end + std::min(size, m_zpl.size() - end);
    }
    void takeCommand();

    const std::string_view m_zpl;
    size_t m_at = 0;
    bool m_isInLabel = false;
    QStringList m_found;
};

void Reader::takeCommand()
{
    constexpr size_t nameEnd = 3;
    const size_t begin = m_at;
    if (const size_t next = m_zpl.find_first_of("^~", begin + 1); next < begin + nameEnd) { // a broken command
        m_at = next;
        return;
    }
    std::string name(m_zpl.substr(begin + 1, nameEnd - 1));
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    m_at = std::min(begin + nameEnd, m_zpl.size());
    const std::string_view rest = m_zpl.substr(m_at);
    const auto letter = [&rest](size_t at) {
        return at < rest.size() ? char(std::toupper(static_cast<unsigned char>(rest[at]))) : '\0';
    };

    const auto character = std::ranges::find(characters, name, &Character::name);
    if (character != std::end(characters)) {
        m_at = std::min(m_at + 1, m_zpl.size());
        if (letter(0) != character->usual)
            report(m_zpl.substr(begin, nameEnd + 1));
    } else if (isAmong(lasting, name) && !(name == "JS" && m_zpl[begin] == '~')) { // ~JSN is in usual labels
        report(m_zpl.substr(begin, name == "JU" ? nameEnd + 1 : nameEnd));
    } else if (isAmong(storing, name) && letter(1) == ':' && letter(0) != 'R') {
        report(m_zpl.substr(begin, nameEnd + 2));
    }
    if (name == "XA" || name == "XZ") {
        m_isInLabel = name == "XA";
    } else if (name == "GF" && (letter(0) == 'B' || letter(0) == 'C')) {
        skipBytes(1, 4);
    } else if (name == "DY" && m_zpl.substr(m_at, 80).find(",B,") != m_zpl.npos) {
        skipBytes(3, 5);
    }
    if (!m_isInLabel && name == "XZ") {
        takeText();
        return;
    }
    const std::string_view parameters = skip();
    if (!m_isInLabel && parameters.find("\n! ") != parameters.npos)
        report(parameters.substr(parameters.find("\n! ") + 1));
}

} // namespace

QStringList lastingCommands(const QByteArray &zpl)
{
    return Reader(zpl).findings();
}

} // namespace parcelory::Zpl
