// SPDX-License-Identifier: MIT
#include "SwayServer.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>

#include <chrono>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr uid_t nobody = 65534;

/// Sway refuses to run as root.
QStringList asNobody()
{
    const QString id = QString::number(nobody);
    return {u"--reuid="_s + id, u"--regid="_s + id, u"--clear-groups"_s};
}

} // namespace

SwayServer::SwayServer()
{
    QFile configuration(m_folder.filePath(u"config"_s));
    if (configuration.open(QIODevice::WriteOnly))
        configuration.write("xwayland disable\nswaybg_command -\n");
    const bool isRoot = geteuid() == 0;
    if (isRoot && chown(QFile::encodeName(m_folder.path()).constData(), nobody, nobody) != 0)
        qFatal("Cannot give the compositor its folder");

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    environment.insert(u"WLR_BACKENDS"_s, u"headless"_s);
    environment.insert(u"WLR_RENDERER"_s, u"pixman"_s);
    environment.insert(u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setProgram(u"setpriv"_s);
    m_process.setArguments(
        (isRoot ? asNobody() : QStringList())
        + QStringList{u"--pdeathsig=KILL"_s, u"sway"_s, u"--config"_s, configuration.fileName()});
}

SwayServer::~SwayServer()
{
    stop();
}

bool SwayServer::start()
{
    m_process.start(QIODevice::ReadOnly);
    const QDeadlineTimer deadline(20s);
    while (!deadline.hasExpired() && m_process.state() != QProcess::NotRunning) {
        QLocalSocket socket;
        socket.connectToServer(QString::fromLocal8Bit(display()));
        if (socket.waitForConnected(1'000))
            return true;
        m_process.waitForFinished(20); // or a moment
    }
    return false;
}

void SwayServer::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5'000))
        m_process.kill();
    m_process.waitForFinished();
}

QByteArray SwayServer::display() const
{
    return QFile::encodeName(m_folder.filePath(u"wayland-1"_s));
}
