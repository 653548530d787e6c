// SPDX-License-Identifier: MIT
#include "LinkFileReader.h"

#include "LinkAddress.h"
#include "LinkJson.h"
#include "Utf8.h"

#include <QIODevice>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype chunkSize = 65536;
/// More than any link needs that can be copied, with everything escaped.
constexpr qsizetype pieceLimit = 8 << 20;

bool isSpace(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// Absent when `bytes` are not UTF-8 throughout.
std::optional<QString> decoded(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// What a character reference stands for; `name` is without "&" and ";". Absent when unknown.
std::optional<QString> character(QStringView name)
{
    if (name.startsWith(u'#')) {
        const bool isHex = name.startsWith(u"#x") || name.startsWith(u"#X");
        bool isNumber = false;
        const char32_t code = name.sliced(isHex ? 2 : 1).toUInt(&isNumber, isHex ? 16 : 10);
        const bool isCharacter =
            isNumber && code > 0 && code <= QChar::LastValidCodePoint && !QChar::isSurrogate(code);
        return isCharacter ? std::optional(QString::fromUcs4(&code, 1)) : std::nullopt;
    }
    constexpr std::pair<QStringView, QChar> named[] = {
        {u"amp", u'&'}, {u"lt", u'<'}, {u"gt", u'>'}, {u"quot", u'"'}, {u"apos", u'\''}};
    for (const auto &[known, replacement] : named) {
        if (name == known)
            return QString(replacement);
    }
    return std::nullopt;
}

/// `text` with its character references replaced, each once; unknown ones stay.
QString unescaped(const QString &text)
{
    constexpr qsizetype longestName = 10;
    QString result;
    qsizetype done = 0;
    for (auto begin = text.indexOf(u'&'); begin >= 0; begin = text.indexOf(u'&', begin + 1)) {
        const QStringView rest = QStringView(text).sliced(begin + 1);
        const auto size = rest.first(std::min(rest.size(), longestName)).indexOf(u';');
        const auto replacement = size < 0 ? std::nullopt : character(rest.first(size));
        if (!replacement)
            continue;
        result += QStringView(text).sliced(done, begin - done) + *replacement;
        done = begin + 1 + size + 1;
    }
    return result + QStringView(text).sliced(done);
}

bool isLinkTag(QByteArrayView tag)
{
    return tag.size() > 1 && (tag[0] == 'a' || tag[0] == 'A') && isSpace(tag[1]);
}

/// Whether an open title ends at this tag, which cannot be a part of it.
bool endsTitle(QByteArrayView tag)
{
    const auto end = std::find_if(tag.begin(), tag.end(), isSpace);
    const QByteArray name = QByteArrayView(tag.begin(), end).toByteArray().toLower();
    return isLinkTag(tag) || name == "/a" || name == "dt" || name == "dd" || name == "dl"
        || name == "/dl" || name == "h3";
}

/// The value of the attribute `name`, given in lower case, as it stands in `tag`.
std::optional<QByteArrayView> attribute(QByteArrayView tag, QByteArrayView name)
{
    const auto end = tag.end();
    auto place = tag.begin();
    while (place != end) {
        const auto nameEnd =
            std::find_if(place, end, [](char byte) { return isSpace(byte) || byte == '='; });
        const bool isSought =
            QByteArrayView(place, nameEnd).compare(name, Qt::CaseInsensitive) == 0;
        if (nameEnd == end || *nameEnd != '=') {
            place = std::find_if_not(nameEnd, end, isSpace);
            continue;
        }
        auto begin = nameEnd + 1;
        const bool isQuoted = begin != end && (*begin == '"' || *begin == '\'');
        const auto valueEnd =
            isQuoted ? std::find(begin + 1, end, *begin) : std::find_if(begin, end, isSpace);
        if (isSought && isQuoted && valueEnd == end)
            return QByteArrayView(); // cut
        if (isSought)
            return QByteArrayView(isQuoted ? begin + 1 : begin, valueEnd);
        place =
            std::find_if_not(isQuoted && valueEnd != end ? valueEnd + 1 : valueEnd, end, isSpace);
    }
    return std::nullopt;
}

/// Seconds since the epoch; absent when they are not that, or far from our time.
std::optional<Instant> dateFrom(const std::optional<QByteArrayView> &text)
{
    constexpr qint64 year10000 = 253'402'300'800;
    bool isNumber = false;
    const qint64 seconds = text ? text->toByteArray().toLongLong(&isNumber) : 0;
    if (!isNumber || seconds <= 0 || seconds >= year10000)
        return std::nullopt;
    return Instant(std::chrono::seconds(seconds));
}

std::optional<CapturedLink> linkTo(const QString &text, Instant copiedAt)
{
    const auto address = webAddressIn(text);
    if (!address)
        return std::nullopt;
    CapturedLink link;
    link.id = QUuid::createUuid();
    link.url = normalizedUrl(*address);
    link.copiedAt = copiedAt;
    return link;
}

/// Finds the end of a JSON object byte by byte.
class ObjectScanner
{
public:
    /// Whether `byte` is part of an object, which it may end.
    bool take(char byte)
    {
        if (m_isInString) {
            m_isInString = byte != '"' || m_isEscaped;
            m_isEscaped = byte == '\\' && !m_isEscaped;
        } else if (byte == '{') {
            ++m_depth;
        } else if (byte == '}') {
            if (m_depth == 0)
                return false;
            --m_depth;
            return true;
        } else if (byte == '"') {
            m_isInString = m_depth > 0;
        }
        return m_depth > 0;
    }
    bool isOutside() const { return m_depth == 0; }

private:
    qint64 m_depth = 0;
    bool m_isInString = false;
    bool m_isEscaped = false;
};

} // namespace

LinkFileReader::LinkFileReader(QIODevice &device, Instant now)
    : m_device(device)
    , m_now(now)
{
}

/// Makes sure that there is a byte at `m_position`; false at the end.
bool LinkFileReader::fill()
{
    if (m_position < m_buffer.size())
        return true;
    m_buffer.resize(chunkSize);
    m_buffer.resize(std::max<qint64>(m_device.read(m_buffer.data(), chunkSize), 0));
    m_position = 0;
    return !m_buffer.isEmpty();
}

bool LinkFileReader::skipSpace()
{
    while (fill()) {
        if (!isSpace(m_buffer.at(m_position)))
            return true;
        ++m_position;
    }
    return false;
}

/// What comes before `end` or the end of all, and passes both; absent at the end of all.
std::optional<LinkFileReader::Piece> LinkFileReader::pieceUntil(char end)
{
    if (!fill())
        return std::nullopt;
    Piece piece;
    while (fill()) {
        const auto found = m_buffer.indexOf(end, m_position);
        const auto stop = found < 0 ? m_buffer.size() : found;
        const auto size = std::min(stop - m_position, pieceLimit - piece.bytes.size());
        piece.bytes.append(m_buffer.constData() + m_position, size);
        piece.isTooLong = piece.isTooLong || size < stop - m_position;
        m_position = found < 0 ? stop : stop + 1;
        piece.isEnded = found >= 0;
        if (piece.isEnded)
            break;
    }
    return piece;
}

std::optional<LinkFileEntry> LinkFileReader::next()
{
    auto entry = nextAsRead();
    if (!entry || !entry->link)
        return entry;
    for (auto *const text : {&entry->link->title, &entry->link->summary}) {
        if (*text && (*text)->size() > longestText)
            text->reset();
    }
    return entry;
}

std::optional<LinkFileEntry> LinkFileReader::nextAsRead()
{
    if (!m_format) {
        if (fill() && m_buffer.startsWith("\xef\xbb\xbf"))
            m_position = 3; // a byte order mark
        if (!skipSpace())
            return std::nullopt;
        const char first = m_buffer.at(m_position);
        m_format = first == '<'            ? Format::bookmarks
            : first == '[' || first == '{' ? Format::json
                                           : Format::lines;
    }
    switch (*m_format) {
    case Format::lines:
        return nextLine();
    case Format::bookmarks:
        return nextBookmark();
    case Format::json:
        return nextObject();
    }
    Q_UNREACHABLE();
}

std::optional<LinkFileEntry> LinkFileReader::nextLine()
{
    if (!skipSpace())
        return std::nullopt;
    const auto line = pieceUntil('\n');
    const auto text = line->isTooLong ? std::nullopt : decoded(line->bytes);
    return LinkFileEntry{text ? linkTo(*text, nextMoment()) : std::nullopt};
}

std::optional<LinkFileEntry> LinkFileReader::nextBookmark()
{
    while (m_tag || pieceUntil('<')) {
        const Piece tag = m_tag ? *std::exchange(m_tag, {}) : pieceUntil('>').value_or(Piece());
        if (isLinkTag(tag.bytes) && attribute(tag.bytes, "href"))
            return bookmarkOf(tag, title());
    }
    return std::nullopt;
}

/// Up to the end of the link, or what can only stand behind it where that is missing. Some programs
/// write titles as they are, so what looks like another tag is a part of it.
QByteArray LinkFileReader::title()
{
    QByteArray text;
    while (const auto piece = pieceUntil('<')) {
        text.append(piece->bytes);
        m_tag = pieceUntil('>');
        if (text.size() > pieceLimit || !m_tag || endsTitle(m_tag->bytes))
            break;
        text.append('<').append(std::exchange(m_tag, {})->bytes).append('>');
    }
    return text;
}

LinkFileEntry LinkFileReader::bookmarkOf(const Piece &tag, const QByteArray &title)
{
    const auto address =
        tag.isTooLong || !tag.isEnded ? std::nullopt : decoded(*attribute(tag.bytes, "href"));
    if (!address)
        return {};
    const Instant moment = nextMoment();
    LinkFileEntry entry{linkTo(unescaped(*address), moment)};
    if (!entry.link)
        return entry;
    entry.link->copiedAt = dateFrom(attribute(tag.bytes, "add_date")).value_or(moment);
    const bool isWhole = tag.bytes.count('"') % 2 == 0; // else the tag goes on in the title
    const QString text = unescaped(readUtf8(title)).trimmed();
    if (isWhole && !text.isEmpty())
        entry.link->title = text;
    return entry;
}

std::optional<LinkFileEntry> LinkFileReader::nextObject()
{
    ObjectScanner scanner;
    QByteArray object;
    bool isTooLong = false;
    bool isEnded = false;
    while (!isEnded && fill()) {
        qsizetype begin = m_position;
        while (!isEnded && m_position < m_buffer.size()) {
            if (scanner.take(m_buffer.at(m_position++)))
                isEnded = scanner.isOutside();
            else
                begin = m_position;
        }
        const auto size = std::min(m_position - begin, pieceLimit - object.size());
        object.append(m_buffer.constData() + begin, size);
        isTooLong = isTooLong || size < m_position - begin;
    }
    if (object.isEmpty())
        return std::nullopt;
    const QJsonDocument document = isTooLong ? QJsonDocument() : readJson(object);
    return LinkFileEntry{linkFrom(document.object(), nextMoment())};
}
