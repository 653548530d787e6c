// SPDX-License-Identifier: MIT
#include "Program.h"

#include <QTest>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

Program::Program(const char *path, const QStringList &arguments,
                 const std::pair<QString, QByteArray> &variable)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(variable.first, QString::fromLocal8Bit(variable.second));
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.start(QString::fromLocal8Bit(path), arguments);
}

int Program::timesSaid(const QByteArray &line)
{
    m_output += m_process.readAllStandardOutput();
    return int(m_output.split('\n').count(line));
}

void Program::signal(int number) const
{
    ::kill(pid_t(m_process.processId()), number);
}

void Program::end()
{
    m_process.kill();
    m_process.waitForFinished();
}

QByteArray Program::allOutput()
{
    const bool hasEnded =
        QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, 10'000);
    return hasEnded ? m_process.readAllStandardOutput() : "does not end";
}
