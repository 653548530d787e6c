// SPDX-License-Identifier: MIT
#pragma once

#include <QTcpServer>
#include <QTcpSocket>

/// Plays the mail provider on a loopback port: reads each request whole and answers all in one way.
class MailApiDouble : public QTcpServer
{
    Q_OBJECT
public:
    enum class Manner {
        answer, ///< sends `bytes` and closes
        answerUnread, ///< the same, whatever is asked
        flood, ///< sends `bytes` and then a gigabyte, as far as it is taken
        reset, ///< breaks the connection once the request has been read
        resetUnread, ///< breaks the connection at once
        silence,
    };

    MailApiDouble(Manner manner, QByteArray bytes);

    /// Such as "http://127.0.0.1:4711".
    QByteArray address() const;
    /// All requests that came whole.
    const QList<QByteArray> &requests() const { return m_requests; }
    int connections() const { return m_connections; }
    qint64 flooded() const { return m_flooded; }

private:
    void serve(QTcpSocket *client);
    void answer(QTcpSocket *client);
    void flood(QTcpSocket *client);

    Manner m_manner;
    QByteArray m_bytes;
    QList<QByteArray> m_requests;
    int m_connections = 0;
    qint64 m_flooded = 0;
};
