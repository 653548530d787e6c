// SPDX-License-Identifier: MIT
#include "X11SelectionReader.h"

#include "SelectionText.h"
#include "X11Connection.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

constexpr qsizetype maxTypes = 256;
constexpr qsizetype maxRetired = 256;

} // namespace

X11SelectionReader::X11SelectionReader(const X11Connection &connection,
                                       const ClipboardLimits &limits)
    : m_connection(connection)
    , m_limits(limits)
    , m_window(connection.makeWindow())
{
    for (QTimer *timer : {&m_step, &m_total}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, &X11SelectionReader::giveUp);
    }
}

void X11SelectionReader::read(xcb_timestamp_t time)
{
    abandon();
    m_time = time;
    m_offered.clear();
    m_textTypes.clear();
    m_total.start(m_limits.total);
    ask(Stage::types, m_connection.atoms().targets);
}

void X11SelectionReader::abandon()
{
    if (!isReading())
        return;
    retireWindow();
    m_stage = Stage::idle;
    m_isIncremental = false;
    m_increments = {};
    m_step.stop();
    m_total.stop();
}

/// The late owner may still write to the window: a program that finds it destroyed dies of that.
void X11SelectionReader::retireWindow()
{
    clearTransfer(m_window);
    m_retired.append({m_window, QDeadlineTimer(m_limits.total)});
    if (m_retired.size() > maxRetired)
        xcb_destroy_window(m_connection.xcb(), m_retired.takeFirst().window);
    m_window = m_connection.makeWindow();
    xcb_flush(m_connection.xcb());
}

void X11SelectionReader::ask(Stage stage, xcb_atom_t target)
{
    const X11Atoms &atoms = m_connection.atoms();
    m_stage = stage;
    m_target = target;
    clearTransfer(m_window);
    xcb_convert_selection(m_connection.xcb(), m_window, atoms.clipboard, target, atoms.transfer,
                          m_time);
    xcb_flush(m_connection.xcb());
    m_step.start(m_limits.step);
}

void X11SelectionReader::askForText()
{
    if (m_textTypes.isEmpty())
        finish({});
    else
        ask(Stage::text, m_textTypes.takeFirst());
}

void X11SelectionReader::selectionAnswered(const xcb_selection_notify_event_t &event)
{
    if (!isReading() || m_isIncremental || event.requestor != m_window || event.target != m_target)
        return; // to a question given up
    if (event.property == XCB_NONE)
        return refused();
    const X11Atoms &atoms = m_connection.atoms();
    const X11Property answer = m_connection.property(m_window, atoms.transfer, m_limits.textBytes);
    if (answer.type == atoms.incr)
        return beginIncrements(answer.data);
    clearTransfer(m_window);
    if (answer.isCut)
        return finish({});
    if (answer.type == XCB_NONE)
        return refused();
    accept(answer.type, answer.data);
}

void X11SelectionReader::beginIncrements(const QByteArray &leastSize)
{
    quint32 least = 0;
    if (leastSize.size() >= qsizetype(sizeof least))
        std::memcpy(&least, leastSize.constData(), sizeof least);
    if (least > m_limits.textBytes)
        return giveUp();
    m_isIncremental = true;
    clearTransfer(m_window); // asks for the first increment
    m_step.start(m_limits.step);
}

void X11SelectionReader::propertyChanged(const xcb_property_notify_event_t &event)
{
    if (event.atom != m_connection.atoms().transfer || event.state != XCB_PROPERTY_NEW_VALUE)
        return;
    if (event.window != m_window)
        discard(event.window);
    else if (m_isIncremental)
        appendIncrement();
}

/// An owner whose increments nobody takes away waits for ever, and serves nobody else.
void X11SelectionReader::discard(xcb_window_t window) const
{
    const auto isStillEmptied = [window](const Retired &retired) {
        return retired.window == window && !retired.deadline.hasExpired();
    };
    if (std::any_of(m_retired.cbegin(), m_retired.cend(), isStillEmptied))
        clearTransfer(window);
}

void X11SelectionReader::appendIncrement()
{
    const X11Property increment =
        m_connection.property(m_window, m_connection.atoms().transfer, m_limits.textBytes);
    if (increment.isCut || m_increments.size() + increment.data.size() > m_limits.textBytes)
        return giveUp();
    clearTransfer(m_window); // asks for the next one
    m_increments += increment.data;
    m_step.start(m_limits.step);
    if (!increment.data.isEmpty())
        return;
    m_isIncremental = false;
    retireWindow(); // an owner that writes on must not spoil the next answer
    accept(increment.type, std::exchange(m_increments, {}));
}

void X11SelectionReader::accept(xcb_atom_t type, const QByteArray &data)
{
    if (m_stage == Stage::types)
        return acceptTypes(data);
    if (m_stage == Stage::hint) {
        if (data == "secret")
            return finish({{}, true});
        return askForText();
    }
    const bool isLatin1 = type == m_connection.atoms().string;
    finish({selectionText(data, isLatin1 ? TextCoding::latin1 : TextCoding::utf8)});
}

void X11SelectionReader::acceptTypes(const QByteArray &data)
{
    const auto *types = reinterpret_cast<const xcb_atom_t *>(data.constData());
    const qsizetype count = std::min(data.size() / qsizetype(sizeof(xcb_atom_t)), maxTypes);
    m_offered = QList<xcb_atom_t>(types, types + count);
    const X11Atoms &atoms = m_connection.atoms();
    for (const xcb_atom_t type : {atoms.utf8String, atoms.plainUtf8, atoms.plainUtf8Upper,
                                  atoms.string, atoms.plain, atoms.text}) {
        if (m_offered.contains(type))
            m_textTypes.append(type);
    }
    if (!m_textTypes.isEmpty() && m_offered.contains(atoms.passwordHint))
        ask(Stage::hint, atoms.passwordHint);
    else
        askForText();
}

void X11SelectionReader::refused()
{
    if (m_stage == Stage::types) // an old program that knows only how to give its text
        m_textTypes = {m_connection.atoms().utf8String, m_connection.atoms().string};
    askForText();
}

void X11SelectionReader::giveUp()
{
    if (!isReading())
        return;
    abandon();
    Q_EMIT finished({});
}

void X11SelectionReader::finish(const ClipboardContents &contents)
{
    m_stage = Stage::idle;
    m_step.stop();
    m_total.stop();
    Q_EMIT finished(contents);
}

void X11SelectionReader::clearTransfer(xcb_window_t window) const
{
    xcb_delete_property(m_connection.xcb(), window, m_connection.atoms().transfer);
    xcb_flush(m_connection.xcb());
}
