// SPDX-License-Identifier: MIT
#pragma once

enum class SecretServiceState { unlocked, locked, absent };

/// The state of the desktop's secret service, which may be started by this but never prompts. Waits
/// for its answers, so not for the main thread of the program.
SecretServiceState secretServiceState();
