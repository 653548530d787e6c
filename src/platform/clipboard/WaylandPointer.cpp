// SPDX-License-Identifier: MIT
#include "WaylandPointer.h"

#include <data-control-client-header.h>

void WaylandDestroy::operator()(ext_data_control_device_v1 *device) const
{
    ext_data_control_device_v1_destroy(device);
}

void WaylandDestroy::operator()(ext_data_control_manager_v1 *manager) const
{
    ext_data_control_manager_v1_destroy(manager);
}

void WaylandDestroy::operator()(ext_data_control_offer_v1 *offer) const
{
    ext_data_control_offer_v1_destroy(offer);
}

void WaylandDestroy::operator()(ext_data_control_source_v1 *source) const
{
    ext_data_control_source_v1_destroy(source);
}

void WaylandDestroy::operator()(wl_callback *callback) const
{
    wl_callback_destroy(callback);
}

void WaylandDestroy::operator()(wl_display *display) const
{
    wl_display_disconnect(display);
}

void WaylandDestroy::operator()(wl_registry *registry) const
{
    wl_registry_destroy(registry);
}

void WaylandDestroy::operator()(wl_seat *seat) const
{
    wl_seat_destroy(seat);
}
