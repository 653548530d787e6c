// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>

#include <functional>

/// Takes the parts of a document in their order; false when it wants no more of them.
using ByteSink = std::function<bool(QByteArrayView)>;
