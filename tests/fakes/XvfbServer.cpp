// SPDX-License-Identifier: MIT
#include "XvfbServer.h"

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

XvfbServer::XvfbServer()
{
    m_process.setProgram(u"Xvfb"_s);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

XvfbServer::~XvfbServer()
{
    stop();
}

bool XvfbServer::start()
{
    QStringList arguments = {u"-displayfd"_s, u"1"_s,         u"-screen"_s, u"0"_s,
                             u"800x600x24"_s, u"-nolisten"_s, u"tcp"_s,     u"-noreset"_s};
    if (!m_display.isEmpty())
        arguments.prepend(QString::fromLatin1(m_display));
    m_process.setArguments(arguments);
    m_process.start(QIODevice::ReadOnly);
    while (!m_process.canReadLine()) { // it tells its number when it is ready
        if (!m_process.waitForReadyRead(10'000))
            return false;
    }
    m_display = ':' + m_process.readLine().trimmed();
    return true;
}

void XvfbServer::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    thaw();
    m_process.terminate();
    if (!m_process.waitForFinished(5'000))
        m_process.kill();
    m_process.waitForFinished();
}

void XvfbServer::freeze()
{
    ::kill(pid_t(m_process.processId()), SIGSTOP);
}

void XvfbServer::thaw()
{
    ::kill(pid_t(m_process.processId()), SIGCONT);
}
