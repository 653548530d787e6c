// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QProcess>

/// Another program, which says what it does line by line. Ends with this object, or with the test.
class Program
{
public:
    using Variables = QMap<QString, QByteArray>;

    /// `variables` are put into its environment.
    Program(const char *path, const QStringList &arguments, const Variables &variables = {});
    ~Program() { end(); }

    /// Writes a line to its standard input.
    void tell(const QByteArray &line) { m_process.write(line + '\n'); }
    void endInput(const QByteArray &rest)
    {
        m_process.write(rest);
        m_process.closeWriteChannel();
    }
    int timesSaid(const QByteArray &line);
    bool hasSaid(const QByteArray &line) { return timesSaid(line) > 0; }
    /// The next line that it says; empty when that takes more than ten seconds.
    QByteArray nextLine();
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    void signal(int number) const;
    void end();
    /// All that it says until it ends by itself.
    QByteArray allOutput();

private:
    QProcess m_process;
    QByteArray m_output;
};
