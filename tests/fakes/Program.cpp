// SPDX-License-Identifier: MIT
#include "Program.h"

#include <QTest>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

Program::Program(const char *path, const QStringList &arguments, const Variables &variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        environment.insert(variable.key(), QString::fromLocal8Bit(variable.value()));
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.start(QString::fromLocal8Bit(path), arguments);
}

QByteArray Program::nextLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(10'000))
            return {};
    }
    return m_process.readLine().trimmed();
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
    if (!isRunning())
        return;
    signal(SIGCONT);
    m_process.terminate();
    if (!m_process.waitForFinished(5'000))
        m_process.kill();
    m_process.waitForFinished();
}

QByteArray Program::allOutput()
{
    const bool hasEnded =
        QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, 10'000);
    return hasEnded ? m_process.readAllStandardOutput() : "does not end";
}
