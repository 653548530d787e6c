// SPDX-License-Identifier: MIT
#include "Compositing.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <xcb/xcb.h>

namespace
{

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

bool hasOwner(xcb_connection_t *connection, std::string_view selection)
{
    const auto asked = xcb_intern_atom(connection, 1, uint16_t(selection.size()), selection.data());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, asked, nullptr),
                                              &std::free);
    if (!atom || atom->atom == XCB_NONE)
        return false;
    const auto sought = xcb_get_selection_owner(connection, atom->atom);
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, sought, nullptr), &std::free);
    return owner && owner->owner != XCB_NONE;
}

} // namespace

bool isComposited()
{
    const auto *const x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *const connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
    return hasOwner(connection, "_NET_WM_CM_S0");
}
