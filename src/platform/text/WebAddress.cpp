// SPDX-License-Identifier: MIT
#include "WebAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <memory>
#include <netinet/in.h>
#include <unicode/bytestream.h>
#include <unicode/idna.h>

namespace
{

/// `scheme://user@host:port/path?query#fragment`, each part as written and the last three together.
struct AddressParts {
    QStringView scheme;
    bool hasAuthority = false;
    std::optional<QStringView> user;
    QStringView host; ///< an IPv6 address in its brackets
    std::optional<QStringView> port;
    QStringView rest;
    QString askedHost;
};

bool isForbidden(QChar character)
{
    if (character > u'\\' && character < u'\x7F')
        return false; // as most are
    if (character > u' ' && character < u'\x7F')
        return character == u'"' || character == u'<' || character == u'>' || character == u'\\';
    return character.isSpace() || character.category() == QChar::Other_Control;
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isLetter(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

bool isScheme(QStringView text)
{
    return !text.isEmpty() && isLetter(text.front())
        && std::all_of(text.begin(), text.end(), [](QChar character) {
               return isLetter(character) || isDigit(character) || character == u'+'
                   || character == u'-' || character == u'.';
           });
}

bool isPort(QStringView text)
{
    return std::all_of(text.begin(), text.end(), isDigit)
        && (text.isEmpty() || text.toString().toULongLong() <= 65535);
}

/// Absent when the text has no scheme.
std::optional<AddressParts> split(QStringView text)
{
    AddressParts parts;
    const auto colon = text.indexOf(u':');
    if (colon < 0 || !isScheme(text.first(colon)))
        return std::nullopt;
    parts.scheme = text.first(colon);
    parts.rest = text.sliced(colon + 1);
    parts.hasAuthority = parts.rest.startsWith(u"//");
    if (!parts.hasAuthority)
        return parts;

    QStringView authority = parts.rest.sliced(2);
    const auto end = std::find_if(authority.begin(), authority.end(), [](QChar character) {
        return character == u'/' || character == u'?' || character == u'#';
    });
    parts.rest = authority.sliced(end - authority.begin());
    authority.truncate(end - authority.begin());
    if (const auto at = authority.lastIndexOf(u'@'); at >= 0) {
        parts.user = authority.first(at);
        authority = authority.sliced(at + 1);
    }
    const auto portColon = authority.indexOf(u':', std::max<qsizetype>(authority.indexOf(u']'), 0));
    parts.host = portColon < 0 ? authority : authority.first(portColon);
    if (portColon >= 0)
        parts.port = authority.sliced(portColon + 1);
    return parts;
}

QStringView withoutBrackets(QStringView host)
{
    return host.startsWith(u'[') ? host.sliced(1, host.size() - 2) : host;
}

std::optional<QString> askedIpv6(QStringView written)
{
    in6_addr address;
    std::array<char, INET6_ADDRSTRLEN> text;
    if (!written.endsWith(u']')
        || inet_pton(AF_INET6, withoutBrackets(written).toLatin1().constData(), &address) != 1)
        return std::nullopt;
    return QString::fromLatin1(inet_ntop(AF_INET6, &address, text.data(), text.size()));
}

/// A host whose last label is a number is an IPv4 address or nothing.
bool endsInNumber(const QString &host)
{
    const QStringView last = QStringView(host).sliced(host.lastIndexOf(u'.') + 1);
    if (!last.startsWith(u"0x"))
        return !last.isEmpty() && std::all_of(last.begin(), last.end(), isDigit);
    bool isHex = false;
    (void)last.toULongLong(&isHex, 16);
    return isHex;
}

std::optional<QString> askedIpv4(const QString &written)
{
    in_addr address;
    if (inet_aton(written.toLatin1().constData(), &address) == 0)
        return std::nullopt;
    return QString::fromLatin1(inet_ntoa(address));
}

/// A host of which IDNA only puts the letters in lower case. "--" may begin another script's form.
bool isPlain(QStringView host)
{
    return !host.contains(u"--") && std::all_of(host.begin(), host.end(), [](QChar character) {
        return isLetter(character) || isDigit(character) || character == u'-' || character == u'.';
    });
}

/// Without the limits of DNS on lengths and hyphens, which browsers leave to DNS.
std::optional<QByteArray> domainToAscii(const QByteArray &utf8)
{
    constexpr uint32_t options = UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ
        | UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_NONTRANSITIONAL_TO_UNICODE;
    constexpr uint32_t overlooked = UIDNA_ERROR_EMPTY_LABEL | UIDNA_ERROR_LABEL_TOO_LONG
        | UIDNA_ERROR_DOMAIN_NAME_TOO_LONG | UIDNA_ERROR_LEADING_HYPHEN
        | UIDNA_ERROR_TRAILING_HYPHEN | UIDNA_ERROR_HYPHEN_3_4;
    UErrorCode status = U_ZERO_ERROR;
    static const std::unique_ptr<icu::IDNA> idna(icu::IDNA::createUTS46Instance(options, status));
    std::string ascii;
    icu::StringByteSink<std::string> sink(&ascii);
    icu::IDNAInfo info;
    if (idna)
        idna->nameToASCII_UTF8({utf8.constData(), int32_t(utf8.size())}, sink, info, status);
    if (!idna || U_FAILURE(status) || (info.getErrors() & ~overlooked) != 0)
        return std::nullopt;
    return QByteArray::fromStdString(ascii);
}

bool isForbiddenInDomain(char character)
{
    return character <= ' ' || character == '\x7F' || std::strchr("#/:<>?@[\\]^|%", character);
}

std::optional<QString> askedDomain(QStringView host)
{
    if (isPlain(host))
        return host.toString().toLower();
    const auto ascii = domainToAscii(QByteArray::fromPercentEncoding(host.toUtf8()));
    if (!ascii || std::any_of(ascii->begin(), ascii->end(), isForbiddenInDomain))
        return std::nullopt;
    return QString::fromLatin1(*ascii);
}

/// Bytes that are not printable ASCII, and those of `alsoEncoded`, as browsers send them.
QByteArray percentEncoded(QStringView text, const char *alsoEncoded)
{
    QByteArray encoded;
    for (const char byte : text.toUtf8()) {
        if (byte > ' ' && byte < '\x7F' && !std::strchr(alsoEncoded, byte))
            encoded += byte;
        else
            encoded += '%' + QByteArray(1, byte).toHex().toUpper();
    }
    return encoded;
}

QByteArray encodedUser(QStringView user)
{
    constexpr auto also = "`{}/:;=@[]^|";
    const auto colon = user.indexOf(u':');
    if (colon < 0)
        return percentEncoded(user, also);
    return percentEncoded(user.first(colon), also) + ':'
        + percentEncoded(user.sliced(colon + 1), also);
}

QByteArray encodedRest(QStringView rest)
{
    const auto fragment = rest.indexOf(u'#');
    const QStringView asked = fragment < 0 ? rest : rest.first(fragment);
    const auto query = asked.indexOf(u'?');
    QByteArray encoded = percentEncoded(query < 0 ? asked : asked.first(query), "`{}^");
    if (query >= 0)
        encoded += percentEncoded(asked.sliced(query), "'");
    if (fragment >= 0)
        encoded += percentEncoded(rest.sliced(fragment), "`");
    return encoded;
}

QByteArray requestForm(const AddressParts &parts)
{
    QByteArray encoded = parts.scheme.toLatin1() + (parts.hasAuthority ? "://" : ":");
    if (parts.user)
        encoded += encodedUser(*parts.user) + '@';
    const QByteArray host = parts.askedHost.toLatin1();
    encoded += parts.host.startsWith(u'[') ? '[' + host + ']' : host;
    if (parts.port)
        encoded += ':' + parts.port->toLatin1();
    return encoded + encodedRest(parts.rest);
}

std::optional<AddressParts> parsed(const QString &text)
{
    if (std::any_of(text.begin(), text.end(), isForbidden))
        return std::nullopt;
    auto parts = split(text);
    if (!parts || (parts->port && !isPort(*parts->port)))
        return std::nullopt;
    if (parts->host.isEmpty())
        return parts->user || parts->port ? std::nullopt : parts;
    auto asked = askedHost(parts->host);
    if (!asked)
        return std::nullopt;
    parts->askedHost = std::move(*asked);
    return parts;
}

} // namespace

std::optional<QString> askedHost(QStringView host)
{
    if (host.startsWith(u'['))
        return askedIpv6(host);
    const auto domain = askedDomain(host);
    if (!domain || domain->isEmpty())
        return std::nullopt;
    const QString labels = domain->endsWith(u'.') ? domain->chopped(1) : *domain;
    return endsInNumber(labels) ? askedIpv4(labels) : domain;
}

std::optional<WebAddress> WebAddress::parse(const QString &text)
{
    const auto parts = parsed(text);
    if (!parts)
        return std::nullopt;
    WebAddress address;
    address.m_host = withoutBrackets(parts->host).toString();
    address.m_askedHost = parts->askedHost;
    address.m_encoded = requestForm(*parts);
    return address;
}

bool isWebAddress(const QString &text)
{
    return parsed(text).has_value();
}

QString hostOf(const QString &url)
{
    const auto parts = parsed(url);
    return parts ? withoutBrackets(parts->host).toString() : QString();
}
