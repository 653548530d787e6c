// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

struct ext_data_control_device_v1;
struct ext_data_control_manager_v1;
struct ext_data_control_offer_v1;
struct ext_data_control_source_v1;
struct wl_callback;
struct wl_display;
struct wl_registry;
struct wl_seat;

struct WaylandDestroy {
    void operator()(ext_data_control_device_v1 *device) const;
    void operator()(ext_data_control_manager_v1 *manager) const;
    void operator()(ext_data_control_offer_v1 *offer) const;
    void operator()(ext_data_control_source_v1 *source) const;
    void operator()(wl_callback *callback) const;
    void operator()(wl_display *display) const;
    void operator()(wl_registry *registry) const;
    void operator()(wl_seat *seat) const;
};
/// A connection, or an object on one, which must be destroyed before it.
template <typename T>
using WaylandPointer = std::unique_ptr<T, WaylandDestroy>;
