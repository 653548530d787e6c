// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

#include <utility>

/// Another program, which says what it does line by line. Ends with this object.
class Program
{
public:
    /// `variable` is put into its environment.
    Program(const char *path, const QStringList &arguments,
            const std::pair<QString, QByteArray> &variable);
    ~Program() { end(); }

    /// Writes a line to its standard input.
    void tell(const QByteArray &line) { m_process.write(line + '\n'); }
    int timesSaid(const QByteArray &line);
    bool hasSaid(const QByteArray &line) { return timesSaid(line) > 0; }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    void signal(int number) const;
    void end();
    /// All that it says until it ends by itself.
    QByteArray allOutput();

private:
    QProcess m_process;
    QByteArray m_output;
};
