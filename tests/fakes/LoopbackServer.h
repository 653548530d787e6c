// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QTcpServer>

#include <functional>
#include <memory>

class QTcpSocket;

/// A web server on this machine that answers as the test says, however wrong that is.
class LoopbackServer : public QObject
{
    Q_OBJECT
public:
    enum class Scheme { http, https };
    /// Answers one request, whose head and body are in `request`. The socket is the answer's to
    /// use.
    using Answer = std::function<void(QTcpSocket &socket, const QByteArray &request)>;

    /// With https under a certificate made for the occasion, which `caFile` names.
    explicit LoopbackServer(Scheme scheme = Scheme::http,
                            const QHostAddress &address = QHostAddress::LocalHost);

    void on(const QByteArray &path, Answer answer) { m_answers.insert(path, std::move(answer)); }
    QByteArray url(const QByteArray &path) const;
    QByteArray caFile() const { return m_caFile; }
    /// All requests so far, heads and bodies.
    const QList<QByteArray> &requests() const { return m_requests; }
    /// How many connections there were so far.
    int connections() const { return m_connections; }
    /// The most connections that were open at the same time.
    int mostAtOnce() const { return m_mostAtOnce; }

    /// An answer of `status` with headers (each ended by CRLF) and a body.
    static Answer reply(int status, const QByteArray &body, const QByteArray &headers = {});

private:
    void welcome(QTcpSocket *socket);
    void read(QTcpSocket &socket, QByteArray &received);

    Scheme m_scheme;
    std::unique_ptr<QTcpServer> m_server;
    QByteArray m_caFile;
    QHash<QByteArray, Answer> m_answers;
    QList<QByteArray> m_requests;
    int m_connections = 0;
    int m_atOnce = 0;
    int m_mostAtOnce = 0;
};
