// SPDX-License-Identifier: MIT
#include "LoopbackServer.h"

#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpSocket>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace
{

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A key and a certificate of 127.0.0.1 that nobody but the test trusts.
const QString &certificateFolder()
{
    static const QTemporaryDir folder;
    static const QString path = [] {
        QProcess::execute(u"openssl"_s,
                          {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s,
                           u"-batch"_s, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=127.0.0.1"_s,
                           u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s, u"-keyout"_s,
                           folder.filePath(u"key.pem"_s), u"-out"_s,
                           folder.filePath(u"certificate.pem"_s)});
        return folder.path();
    }();
    return path;
}

std::unique_ptr<QTcpServer> makeSecureServer()
{
    auto server = std::make_unique<QSslServer>();
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setPrivateKey(QSslKey(contentsOf(certificateFolder() + u"/key.pem"), QSsl::Rsa));
    configuration.setLocalCertificate(
        QSslCertificate(contentsOf(certificateFolder() + u"/certificate.pem")));
    server->setSslConfiguration(configuration);
    return server;
}

bool isComplete(const QByteArray &request)
{
    const qsizetype end = request.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    const qsizetype length = request.toLower().indexOf("\r\ncontent-length:");
    const qsizetype size = length < 0
        ? 0
        : request.mid(length + 17, request.indexOf("\r\n", length + 2) - length - 17).toLongLong();
    return request.size() >= end + 4 + size;
}

} // namespace

LoopbackServer::LoopbackServer(Scheme scheme, const QHostAddress &address)
    : m_scheme(scheme)
    , m_server(scheme == Scheme::https ? makeSecureServer() : std::make_unique<QTcpServer>())
{
    if (scheme == Scheme::https)
        m_caFile = QFile::encodeName(certificateFolder() + u"/certificate.pem");
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket *const socket = m_server->nextPendingConnection())
            welcome(socket);
    });
    if (!m_server->listen(address))
        qFatal("%s", qPrintable(m_server->errorString()));
}

QByteArray LoopbackServer::url(const QByteArray &path) const
{
    return QByteArray(m_scheme == Scheme::https ? "https" : "http") + "://"
        + m_server->serverAddress().toString().toLatin1() + ':'
        + QByteArray::number(m_server->serverPort()) + path;
}

LoopbackServer::Answer LoopbackServer::reply(int status, const QByteArray &body,
                                             const QByteArray &headers)
{
    return [=](QTcpSocket &socket, const QByteArray &) {
        socket.write("HTTP/1.1 " + QByteArray::number(status) + " Whatever\r\nContent-Length: "
                     + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body);
    };
}

void LoopbackServer::welcome(QTcpSocket *socket)
{
    ++m_connections;
    m_mostAtOnce = std::max(m_mostAtOnce, ++m_atOnce);
    connect(socket, &QTcpSocket::disconnected, this, [this] { --m_atOnce; });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    const auto received = std::make_shared<QByteArray>();
    connect(socket, &QTcpSocket::readyRead, this,
            [this, socket, received] { read(*socket, *received); });
    read(*socket, *received);
}

void LoopbackServer::read(QTcpSocket &socket, QByteArray &received)
{
    received += socket.readAll();
    if (!isComplete(received))
        return;
    const QByteArray request = std::exchange(received, {});
    m_requests.append(request);
    const QByteArray path = request.split(' ').value(1);
    m_answers.value(path, reply(404, "nothing here"))(socket, request);
}
