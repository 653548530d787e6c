// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QByteArray>

class QJsonObject;

/// A link as the JSON object that the command line prints; absent fields are left out.
QByteArray jsonOf(const CapturedLink &link);

/// The link of such an object. What is missing or makes no sense is as in a link that is copied
/// now. With an `id` the address is taken as stored, without one as copied; absent when there is
/// none.
std::optional<CapturedLink> linkFrom(const QJsonObject &object, Instant now);
