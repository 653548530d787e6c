// SPDX-License-Identifier: MIT
// An owner of the X11 clipboard with the faults that its arguments name, unless they say `waits`;
// after `copy` on standard input, those that follow it there. It says on standard output what it is
// asked, and ends with status 3 when a window it answers to is gone, as programs do that take such
// an error for fatal.

#include "X11Connection.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QStringList>

#include <array>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace
{

/// Words such as `silent`, and values such as `text=...`.
class Arguments
{
public:
    explicit Arguments(const QStringList &arguments)
        : m_arguments(arguments)
    {
    }
    bool has(const QString &word) const { return m_arguments.contains(word); }
    QString value(const QString &name, const QString &otherwise = {}) const
    {
        for (const QString &argument : m_arguments) {
            if (argument.startsWith(name + u'='))
                return argument.mid(name.size() + 1);
        }
        return otherwise;
    }
    int number(const QString &name, int otherwise) const
    {
        return value(name, QString::number(otherwise)).toInt();
    }

private:
    QStringList m_arguments;
};

void say(const char *word)
{
    std::puts(word);
    std::fflush(stdout);
}

class FaultyOwner
{
public:
    FaultyOwner(X11Connection &connection, const Arguments &arguments);
    int run();

private:
    void claim();
    void obey();
    void pretendToManageWindows();
    void setOwner();
    void handle(const xcb_generic_event_t &event);
    void asked(const xcb_selection_request_event_t &request);
    bool give(const xcb_selection_request_event_t &request);
    bool giveTypes(const xcb_selection_request_event_t &request);
    bool giveText(const xcb_selection_request_event_t &request);
    void giveIncrement(const xcb_property_notify_event_t &event);
    void pause() const { std::this_thread::sleep_for(milliseconds(m_is.number(u"pause"_s, 0))); }
    void write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, int format,
               const QByteArray &data);

    X11Connection &m_connection;
    const X11Atoms &m_atoms;
    Arguments m_is;
    xcb_window_t m_window;
    QByteArray m_text;
    int m_copies = 0;
    int m_increments = 0;
    bool m_isRejected = false;
};

FaultyOwner::FaultyOwner(X11Connection &connection, const Arguments &arguments)
    : m_connection(connection)
    , m_atoms(connection.atoms())
    , m_is(arguments)
    , m_window(connection.makeWindow())
{
}

int FaultyOwner::run()
{
    const int copies = m_is.number(u"copies"_s, 1);
    const milliseconds interval(m_is.number(u"interval"_s, 0));
    if (m_is.has(u"manages-windows"_s))
        pretendToManageWindows();
    if (m_is.has(u"waits"_s))
        ++m_copies;
    else
        claim();
    say("ready");
    QDeadlineTimer next(interval);
    while (!m_isRejected && !m_connection.isBroken() && !m_is.has(u"dies"_s)) {
        if (m_copies < copies && next.hasExpired()) {
            claim();
            next.setRemainingTime(interval);
        }
        while (const auto event = m_connection.nextEvent())
            handle(*event);
        std::array<pollfd, 2> readable = {
            {{m_connection.fileDescriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
        poll(readable.data(), readable.size(), m_copies < copies ? int(next.remainingTime()) : -1);
        if (readable[1].revents & POLLIN)
            obey();
    }
    return m_isRejected ? 3 : 0;
}

void FaultyOwner::obey()
{
    std::string line;
    std::getline(std::cin, line);
    m_is = Arguments(QString::fromStdString(line).split(u' '));
    claim();
}

void FaultyOwner::pretendToManageWindows()
{
    const QByteArray name = m_is.value(u"called"_s).toUtf8();
    write(m_window, m_atoms.wmName, m_atoms.utf8String, 8, name);
    const QByteArray window(reinterpret_cast<const char *>(&m_window), sizeof m_window);
    write(m_connection.rootWindow(), m_atoms.wmCheck, XCB_ATOM_WINDOW, 32, window);
    m_connection.synchronize();
}

void FaultyOwner::claim()
{
    for (int others = m_is.number(u"flood"_s, 1) - 1; others > 0; --others)
        setOwner();
    setOwner();
    m_connection.synchronize();
}

void FaultyOwner::setOwner()
{
    ++m_copies;
    const QString text = m_is.value(u"text"_s, u"https://owner.example/%1"_s.arg(m_copies));
    m_text = m_is.has(u"latin1"_s) ? text.toLatin1() : text.toUtf8();
    xcb_set_selection_owner(m_connection.xcb(), m_window, m_atoms.clipboard, XCB_CURRENT_TIME);
}

void FaultyOwner::handle(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f;
    if (type == 0)
        m_isRejected = true;
    else if (type == XCB_SELECTION_REQUEST)
        asked(reinterpret_cast<const xcb_selection_request_event_t &>(event));
    else if (type == XCB_PROPERTY_NOTIFY)
        giveIncrement(reinterpret_cast<const xcb_property_notify_event_t &>(event));
}

void FaultyOwner::asked(const xcb_selection_request_event_t &request)
{
    const bool isForText =
        request.target != m_atoms.targets && request.target != m_atoms.passwordHint;
    say(isForText ? "asked for text" : "asked");
    if (m_is.has(u"silent"_s) || (isForText && m_is.has(u"no-text"_s)))
        return;
    pause();
    xcb_selection_notify_event_t answer = {};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = request.time;
    answer.requestor = request.requestor;
    answer.selection = request.selection;
    answer.target = request.target;
    answer.property = give(request) ? request.property : xcb_atom_t(XCB_NONE);
    xcb_send_event(m_connection.xcb(), 0, request.requestor, 0,
                   reinterpret_cast<const char *>(&answer));
    m_connection.synchronize();
    say("answered");
    if (isForText)
        say("gave text");
}

bool FaultyOwner::give(const xcb_selection_request_event_t &request)
{
    if (request.target == m_atoms.targets)
        return giveTypes(request);
    if (request.target == m_atoms.passwordHint)
        write(request.requestor, request.property, request.target, 8, "secret");
    else if (request.target == m_atoms.utf8String)
        return giveText(request);
    else
        return false;
    return true;
}

bool FaultyOwner::giveTypes(const xcb_selection_request_event_t &request)
{
    if (m_is.has(u"refuses-types"_s))
        return false;
    QList<xcb_atom_t> types = {m_atoms.targets};
    types.append(m_is.has(u"image"_s) ? m_atoms.wmCheck : m_atoms.utf8String); // any other type
    if (m_is.has(u"secret"_s))
        types.append(m_atoms.passwordHint);
    if (m_is.has(u"more-types"_s))
        types.append(m_atoms.plain);
    if (m_is.has(u"keeper-types"_s)) // as mutter offers what programs that ended have copied
        types = {m_atoms.plainUtf8, m_atoms.utf8String, m_atoms.targets, m_atoms.timestamp};
    if (m_is.has(u"thousand-types"_s))
        types.insert(types.end(), 1000, m_atoms.wmName);
    write(request.requestor, request.property, XCB_ATOM_ATOM, 32,
          QByteArray(reinterpret_cast<const char *>(types.constData()),
                     types.size() * qsizetype(sizeof(xcb_atom_t))));
    return true;
}

bool FaultyOwner::giveText(const xcb_selection_request_event_t &request)
{
    if (!m_is.has(u"incr"_s)) {
        const QByteArray text =
            m_text.leftJustified(m_is.number(u"bytes"_s, int(m_text.size())), 'x');
        if (m_is.has(u"copies-while-answering"_s) && m_copies == 1)
            setOwner(); // reaches the asker together with the answer, before it
        write(request.requestor, request.property, m_atoms.utf8String, 8, text);
        return true;
    }
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection.xcb(), request.requestor, XCB_CW_EVENT_MASK, &events);
    const quint32 announced = m_is.number(u"announced"_s, 1);
    m_increments = 0;
    write(request.requestor, request.property, m_atoms.incr, 32,
          QByteArray(reinterpret_cast<const char *>(&announced), sizeof announced));
    return true;
}

void FaultyOwner::giveIncrement(const xcb_property_notify_event_t &event)
{
    const bool isAskedFor = m_is.has(u"incr"_s) && event.window != m_window
        && event.state == XCB_PROPERTY_DELETE && event.atom == m_atoms.transfer;
    const int last = m_is.number(u"increments"_s, 1);
    const bool isEndless = m_is.has(u"endless"_s);
    if (!isAskedFor || (m_is.has(u"stalls"_s) && m_increments == last)
        || (!isEndless && m_increments > last))
        return;
    pause();
    const bool isMore = isEndless || m_increments < last;
    const QByteArray increment =
        isMore ? m_text.leftJustified(m_is.number(u"bytes"_s, int(m_text.size())), 'x') : "";
    write(event.window, event.atom, m_atoms.utf8String, 8, increment);
    ++m_increments;
    say("gave an increment");
}

void FaultyOwner::write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, int format,
                        const QByteArray &data)
{
    xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, window, property, type,
                        quint8(format), quint32(data.size() / (format / 8)), data.constData());
    xcb_flush(m_connection.xcb());
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const auto connection = X11Connection::open({});
    if (!connection)
        return 1;
    return FaultyOwner(*connection, Arguments(application.arguments())).run();
}
