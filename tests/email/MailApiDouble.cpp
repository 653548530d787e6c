// SPDX-License-Identifier: MIT
#include "MailApiDouble.h"

#include <QHash>

#include <sys/socket.h>

namespace
{

constexpr qint64 gigabyte = 1 << 30;

bool isWhole(const QByteArray &request)
{
    const qsizetype headEnd = request.indexOf("\r\n\r\n");
    const QByteArray name = "\r\nContent-Length: ";
    const qsizetype begin = request.indexOf(name) + name.size();
    const qint64 length = request.mid(begin, request.indexOf('\r', begin) - begin).toLongLong();
    return headEnd >= 0 && request.size() - headEnd - 4 >= length;
}

/// Makes the kernel send a reset instead of an orderly end.
void breakOff(QTcpSocket *client)
{
    const linger atOnce = {1, 0};
    setsockopt(int(client->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    client->abort();
}

} // namespace

MailApiDouble::MailApiDouble(Manner manner, QByteArray bytes)
    : m_manner(manner)
    , m_bytes(std::move(bytes))
{
    listen(QHostAddress::LocalHost);
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *const client = nextPendingConnection())
            serve(client);
    });
}

QByteArray MailApiDouble::address() const
{
    return "http://127.0.0.1:" + QByteArray::number(serverPort());
}

void MailApiDouble::serve(QTcpSocket *client)
{
    ++m_connections;
    if (m_manner == Manner::resetUnread)
        return breakOff(client);
    connect(client, &QTcpSocket::readyRead, this, [this, client, request = QByteArray()]() mutable {
        request += client->readAll();
        if (m_manner != Manner::answerUnread && !isWhole(request))
            return;
        m_requests.append(std::exchange(request, {}));
        answer(client);
    });
}

void MailApiDouble::answer(QTcpSocket *client)
{
    if (m_manner == Manner::silence)
        return;
    if (m_manner == Manner::reset)
        return breakOff(client);
    client->write(m_bytes);
    if (m_manner == Manner::flood) {
        connect(client, &QTcpSocket::bytesWritten, this, [this, client] { flood(client); });
        flood(client);
    } else {
        client->disconnectFromHost();
    }
}

void MailApiDouble::flood(QTcpSocket *client)
{
    static const QByteArray piece(64 << 10, ' ');
    if (client->bytesToWrite() > 0 || m_flooded >= gigabyte)
        return;
    m_flooded += client->write(piece);
}
