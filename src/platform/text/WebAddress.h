// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A text that browsers open as an address, by the WHATWG's URL rules. Stricter than they are in
/// two things: no white space or control character stands in it, and none of `"`, `<`, `>`, `\`.
/// Looser in one: it need not name a host ("https://", "http:///path").
class WebAddress
{
public:
    /// Absent when `text` does not parse as a URL.
    static std::optional<WebAddress> parse(const QString &text);

    /// As written, without user, port and the brackets of an IPv6 address; empty when there is
    /// none.
    QString host() const { return m_host; }
    /// As a request for the address asks for it (`askedHost`).
    QString askedHost() const { return m_askedHost; }
    /// The form for requests: ASCII only, with the host as it is asked for.
    QByteArray encoded() const { return m_encoded; }

private:
    QString m_host;
    QString m_askedHost;
    QByteArray m_encoded;
};

/// Whether `text` parses.
bool isWebAddress(const QString &text);

/// The host of `url` as written; empty when it has none or does not parse.
QString hostOf(const QString &url);

/// What is asked for where `host` is written: percent-decoded, lower case, other scripts in their
/// DNS form, numbers as the IPv4 address that they mean, IPv6 shortened and without its brackets.
/// Absent when no browser would ask for it.
std::optional<QString> askedHost(QStringView host);
