// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

struct XcbFree {
    void operator()(void *reply) const { std::free(reply); }
};
/// A reply or event, which xcb allocates and the caller frees; null when it did not come.
template <typename T>
using XcbPointer = std::unique_ptr<T, XcbFree>;

/// The names by which programs exchange selections.
struct X11Atoms {
    xcb_atom_t clipboard, clipboardManager, saveTargets;
    xcb_atom_t targets, timestamp, incr, passwordHint;
    xcb_atom_t utf8String, plainUtf8, plainUtf8Upper, plain, text;
    xcb_atom_t string = XCB_ATOM_STRING;
    xcb_atom_t transfer, stamp, saved; // properties of our own windows
    xcb_atom_t wmCheck, wmName;
};

struct X11Property {
    xcb_atom_t type = XCB_NONE; // also when there is no such property
    int format = 0; // bits in a unit: 8, 16 or 32
    QByteArray data;
    bool isCut = false;
};

/// A connection to an X server that has XFixes. Each call that asks something waits for the server.
class X11Connection
{
public:
    /// `display` as in the environment variable, which is used when it is empty. Null when no
    /// server answers.
    static std::unique_ptr<X11Connection> open(const QByteArray &display);
    ~X11Connection();
    X11Connection(const X11Connection &) = delete;
    X11Connection &operator=(const X11Connection &) = delete;

    xcb_connection_t *xcb() const { return m_xcb; }
    const X11Atoms &atoms() const { return m_atoms; }
    int fileDescriptor() const { return xcb_get_file_descriptor(m_xcb); }
    bool isBroken() const { return xcb_connection_has_error(m_xcb) != 0; }
    int screen() const { return m_screen; }
    xcb_window_t rootWindow() const { return m_root; }
    qsizetype maxRequestBytes() const { return m_maxRequestBytes; }
    /// The event by which XFixes tells that a selection has another owner.
    int ownerEvent() const { return m_ownerEvent; }
    XcbPointer<xcb_generic_event_t> nextEvent() const;
    /// Of those that came while a reply was waited for.
    XcbPointer<xcb_generic_event_t> queuedEvent() const;

    xcb_atom_t atom(const QByteArray &name) const;
    /// A window nobody sees, whose property changes are told to us.
    xcb_window_t makeWindow() const;
    /// At most `maxBytes`, rounded up to a multiple of four.
    X11Property property(xcb_window_t window, xcb_atom_t name, qsizetype maxBytes) const;
    xcb_window_t selectionOwner(xcb_atom_t selection) const;
    /// From here on `window`, one of ours, is told by the owner event.
    void watchOwner(xcb_atom_t selection, xcb_window_t window) const;
    /// The same for all windows of one program.
    quint32 clientOf(xcb_window_t window) const { return window & ~m_resourceMask; }
    /// Returns when the server has done all that was asked before; its events are then queued.
    void synchronize() const;

private:
    explicit X11Connection(xcb_connection_t *xcb)
        : m_xcb(xcb)
    {
    }
    void keepSetup(int screen);
    bool findExtension();
    bool internAtoms();

    xcb_connection_t *m_xcb;
    int m_screen = 0;
    xcb_window_t m_root = XCB_NONE;
    quint32 m_resourceMask = 0;
    qsizetype m_maxRequestBytes = 0;
    int m_ownerEvent = 0;
    X11Atoms m_atoms = {};
};
