// SPDX-License-Identifier: MIT
#include "SwayServer.h"

#include <QFile>
#include <QLocalSocket>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

bool SwayServer::start()
{
    QFile configuration(m_folder.filePath(u"config"_s));
    if (configuration.open(QIODevice::WriteOnly))
        configuration.write("xwayland disable\nswaybg_command -\n");
    configuration.close();
    QStringList command{u"--pdeathsig=KILL"_s, u"sway"_s, u"--config"_s, configuration.fileName()};
    if (geteuid() == 0) { // as which Sway refuses to run
        constexpr uid_t nobody = 65534;
        if (chown(QFile::encodeName(m_folder.path()).constData(), nobody, nobody) != 0)
            return false;
        command = u"--reuid=65534 --regid=65534 --clear-groups"_s.split(u' ') + command;
    }
    m_server.emplace("setpriv", command,
                     Program::Variables{{u"XDG_RUNTIME_DIR"_s, QFile::encodeName(m_folder.path())},
                                        {u"WLR_BACKENDS"_s, "headless"},
                                        {u"WLR_RENDERER"_s, "pixman"},
                                        {u"WLR_LIBINPUT_NO_DEVICES"_s, "1"},
                                        {u"WAYLAND_DISPLAY"_s, ""}});
    const auto answers = [this] {
        QLocalSocket socket;
        socket.connectToServer(QString::fromLocal8Bit(display()));
        return socket.waitForConnected(1'000);
    };
    return QTest::qWaitFor(answers, 20'000);
}

QByteArray SwayServer::display() const
{
    return QFile::encodeName(m_folder.filePath(u"wayland-1"_s));
}
