// SPDX-License-Identifier: MIT
#include "X11Connection.h"

#include <array>
#include <cstring>
#include <utility>
#include <xcb/xfixes.h>

namespace
{

constexpr std::array<std::pair<const char *, xcb_atom_t X11Atoms::*>, 17> atomNames = {{
    {"CLIPBOARD", &X11Atoms::clipboard},
    {"CLIPBOARD_MANAGER", &X11Atoms::clipboardManager},
    {"SAVE_TARGETS", &X11Atoms::saveTargets},
    {"TARGETS", &X11Atoms::targets},
    {"TIMESTAMP", &X11Atoms::timestamp},
    {"INCR", &X11Atoms::incr},
    {"x-kde-passwordManagerHint", &X11Atoms::passwordHint},
    {"UTF8_STRING", &X11Atoms::utf8String},
    {"text/plain;charset=utf-8", &X11Atoms::plainUtf8},
    {"text/plain;charset=UTF-8", &X11Atoms::plainUtf8Upper},
    {"text/plain", &X11Atoms::plain},
    {"TEXT", &X11Atoms::text},
    {"_STRANDLOOM_TRANSFER", &X11Atoms::transfer},
    {"_STRANDLOOM_STAMP", &X11Atoms::stamp},
    {"_STRANDLOOM_SAVED", &X11Atoms::saved},
    {"_NET_SUPPORTING_WM_CHECK", &X11Atoms::wmCheck},
    {"_NET_WM_NAME", &X11Atoms::wmName},
}};

} // namespace

std::unique_ptr<X11Connection> X11Connection::open(const QByteArray &display)
{
    int screen = 0;
    xcb_connection_t *const xcb =
        xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screen);
    auto connection = std::unique_ptr<X11Connection>(new X11Connection(xcb));
    if (connection->isBroken())
        return {};
    connection->keepSetup(screen);
    if (!connection->findExtension() || !connection->internAtoms())
        return {};
    return connection;
}

X11Connection::~X11Connection()
{
    xcb_disconnect(m_xcb);
}

/// A connection that breaks has no setup any more.
void X11Connection::keepSetup(int screen)
{
    const xcb_setup_t *const setup = xcb_get_setup(m_xcb);
    auto screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < screen && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    m_screen = screen;
    m_root = screens.data->root;
    m_resourceMask = setup->resource_id_mask;
    m_maxRequestBytes = setup->maximum_request_length * qsizetype(4);
}

bool X11Connection::findExtension()
{
    const auto *extension = xcb_get_extension_data(m_xcb, &xcb_xfixes_id);
    if (!extension || !extension->present)
        return false;
    m_ownerEvent = extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    // The server refuses XFixes requests of a client that has not told its version.
    const auto asked = xcb_xfixes_query_version(m_xcb, 1, 0);
    return XcbPointer<xcb_xfixes_query_version_reply_t>(
               xcb_xfixes_query_version_reply(m_xcb, asked, nullptr))
        != nullptr;
}

bool X11Connection::internAtoms()
{
    m_atoms.string = XCB_ATOM_STRING;
    std::array<xcb_intern_atom_cookie_t, atomNames.size()> asked;
    for (size_t i = 0; i < atomNames.size(); ++i) {
        const char *const name = atomNames[i].first;
        asked[i] = xcb_intern_atom(m_xcb, 0, quint16(std::strlen(name)), name);
    }
    bool areAllKnown = true;
    for (size_t i = 0; i < atomNames.size(); ++i) {
        const XcbPointer<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_xcb, asked[i], nullptr));
        areAllKnown = areAllKnown && reply;
        m_atoms.*atomNames[i].second = reply ? reply->atom : XCB_NONE;
    }
    return areAllKnown;
}

XcbPointer<xcb_generic_event_t> X11Connection::nextEvent() const
{
    return XcbPointer<xcb_generic_event_t>(xcb_poll_for_event(m_xcb));
}

XcbPointer<xcb_generic_event_t> X11Connection::queuedEvent() const
{
    return XcbPointer<xcb_generic_event_t>(xcb_poll_for_queued_event(m_xcb));
}

xcb_atom_t X11Connection::atom(const QByteArray &name) const
{
    const auto asked = xcb_intern_atom(m_xcb, 0, quint16(name.size()), name.constData());
    const XcbPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_xcb, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_NONE);
}

xcb_window_t X11Connection::makeWindow() const
{
    const xcb_window_t window = xcb_generate_id(m_xcb);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_xcb, 0, window, m_root, -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return window;
}

X11Property X11Connection::property(xcb_window_t window, xcb_atom_t name, qsizetype maxBytes) const
{
    const auto asked = xcb_get_property(m_xcb, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                        quint32((maxBytes + 3) / 4));
    const XcbPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_xcb, asked, nullptr));
    if (!reply)
        return {};
    const auto *bytes = static_cast<const char *>(xcb_get_property_value(reply.get()));
    return {reply->type, reply->format,
            QByteArray(bytes, xcb_get_property_value_length(reply.get())), reply->bytes_after > 0};
}

xcb_window_t X11Connection::selectionOwner(xcb_atom_t selection) const
{
    const auto asked = xcb_get_selection_owner(m_xcb, selection);
    const XcbPointer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(m_xcb, asked, nullptr));
    return reply ? reply->owner : xcb_window_t(XCB_NONE);
}

void X11Connection::watchOwner(xcb_atom_t selection, xcb_window_t window) const
{
    xcb_xfixes_select_selection_input(m_xcb, window, selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    xcb_flush(m_xcb);
}

void X11Connection::synchronize() const
{
    const auto asked = xcb_get_input_focus(m_xcb);
    const XcbPointer<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_xcb, asked, nullptr));
}
