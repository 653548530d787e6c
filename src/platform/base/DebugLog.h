// SPDX-License-Identifier: MIT
#pragma once

class QString;

/// One diagnostic line for developers; control characters in it become spaces. Goes to standard error when
/// QT_LOGGING_RULES="strandloom.debug=true" asks for it, else nowhere. Any thread.
void debugLog(const QString &line);
