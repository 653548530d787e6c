// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A text that parses as a URL: what browsers leave unescaped in an address (`|`, `{}`, non-ASCII)
/// may stand in it, but no white space, no control character and none of `"`, `<`, `>`, `\`.
class WebAddress
{
public:
    /// Absent when `text` does not parse as a URL.
    static std::optional<WebAddress> parse(const QString &text);

    /// As written, without user, port and the brackets of an IPv6 address; empty when there is
    /// none.
    QString host() const { return m_host; }
    /// The form for requests: ASCII only, the host lower case and in its DNS form.
    QByteArray encoded() const { return m_encoded; }

private:
    WebAddress(QString host, QByteArray encoded);

    QString m_host;
    QByteArray m_encoded;
};

/// The host of `url` as written; empty when it has none or does not parse.
QString hostOf(const QString &url);
