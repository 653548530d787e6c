// SPDX-License-Identifier: MIT
#include "XvfbServer.h"

using namespace Qt::StringLiterals;

bool XvfbServer::start()
{
    QStringList arguments =
        u"-displayfd 1 -screen 0 800x600x24 -nolisten tcp -noreset"_s.split(u' ');
    if (!m_display.isEmpty())
        arguments.prepend(QString::fromLatin1(m_display));
    m_server.emplace("Xvfb", arguments);
    const QByteArray number = m_server->nextLine(); // it tells that when it is ready
    m_display = ':' + number;
    return !number.isEmpty();
}
