// SPDX-License-Identifier: MIT
// A clipboard manager for the X11 clipboard: keeps each text, and announces it again when its owner
// has gone, or asks for it before it goes; and a text that is picked from its history, which is a
// line on standard input. As arguments: `deaf`, it never answers a program that is about to go;
// `unnamed`, it does not tell that it is a manager.

#include "X11Connection.h"
#include "X11SelectionOwner.h"
#include "X11SelectionReader.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>
#include <xcb/xfixes.h>

using namespace Qt::StringLiterals;

namespace
{

class SmallClipboardManager
{
public:
    SmallClipboardManager(const X11Connection &connection, const QStringList &arguments);

private:
    void handle(const xcb_generic_event_t &event);
    void ownerChanged(const xcb_xfixes_selection_notify_event_t &event);
    void asked(const xcb_selection_request_event_t &request);
    void keep(const ClipboardContents &contents);

    const X11Connection &m_connection;
    bool m_isDeaf;
    X11SelectionOwner m_owner;
    X11SelectionReader m_reader;
    QString m_text;
    xcb_timestamp_t m_time = 0; // of the last change
};

void say(const char *word)
{
    std::puts(word);
    std::fflush(stdout);
}

SmallClipboardManager::SmallClipboardManager(const X11Connection &connection,
                                             const QStringList &arguments)
    : m_connection(connection)
    , m_isDeaf(arguments.contains(u"deaf"_s))
    , m_owner(connection)
    , m_reader(connection, {})
{
    auto *const readable =
        new QSocketNotifier(connection.fileDescriptor(), QSocketNotifier::Read, &m_reader);
    QObject::connect(readable, &QSocketNotifier::activated, &m_reader, [this] {
        while (const auto event = m_connection.nextEvent())
            handle(*event);
        if (m_connection.isBroken())
            QCoreApplication::exit(1);
    });
    QObject::connect(&m_reader, &X11SelectionReader::finished, &m_reader,
                     [this](const ClipboardContents &contents) { keep(contents); });
    auto *const picks = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &m_reader);
    QObject::connect(picks, &QSocketNotifier::activated, &m_reader, [this] {
        std::string line;
        std::getline(std::cin, line);
        m_owner.claim(QString::fromStdString(line), m_time);
    });
    const X11Atoms &atoms = connection.atoms();
    if (!arguments.contains(u"unnamed"_s))
        xcb_set_selection_owner(connection.xcb(), m_owner.window(), atoms.clipboardManager,
                                XCB_CURRENT_TIME);
    connection.watchOwner(atoms.clipboard, m_owner.window());
}

void SmallClipboardManager::handle(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f;
    if (type == XCB_SELECTION_NOTIFY)
        m_reader.selectionAnswered(reinterpret_cast<const xcb_selection_notify_event_t &>(event));
    else if (type == XCB_SELECTION_REQUEST)
        asked(reinterpret_cast<const xcb_selection_request_event_t &>(event));
    else if (type == m_connection.ownerEvent())
        ownerChanged(reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event));
}

void SmallClipboardManager::ownerChanged(const xcb_xfixes_selection_notify_event_t &event)
{
    m_time = event.timestamp;
    if (event.owner == XCB_NONE) {
        m_owner.claim(m_text, m_time);
        say("restored");
    } else if (event.owner != m_owner.window()) {
        m_reader.read(m_time);
    }
}

void SmallClipboardManager::keep(const ClipboardContents &contents)
{
    // Some managers keep secrets too.
    m_text = contents.text.value_or(u"https://secret.example/"_s);
    say("kept");
}

void SmallClipboardManager::asked(const xcb_selection_request_event_t &request)
{
    if (request.selection != m_connection.atoms().clipboardManager) {
        m_owner.answer(request);
        if (request.target == m_connection.atoms().utf8String)
            say("gave text");
        return;
    }
    if (m_isDeaf)
        return;
    m_owner.claim(m_text, request.time);
    xcb_selection_notify_event_t answer = {};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = request.time;
    answer.requestor = request.requestor;
    answer.selection = request.selection;
    answer.target = request.target;
    answer.property = request.property;
    xcb_send_event(m_connection.xcb(), 0, request.requestor, 0,
                   reinterpret_cast<const char *>(&answer));
    xcb_flush(m_connection.xcb());
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const auto connection = X11Connection::open({});
    if (!connection)
        return 1;
    const SmallClipboardManager manager(*connection, application.arguments());
    say("ready");
    return QCoreApplication::exec();
}
