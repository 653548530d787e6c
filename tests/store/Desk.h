// SPDX-License-Identifier: MIT
#pragma once

#include "FakeClipboard.h"
#include "FakeHttpClient.h"
#include "FakeSaveDialog.h"
#include "FakeSecretStore.h"
#include "FakeUrlOpener.h"
#include "Preferences.h"
#include "TestStore.h"

#include <QThreadPool>

/// A real store, with the rest of the desktop in memory.
struct Desk : TestStore {
    FakeClipboard clipboard;
    FakeHttpClient web;
    FakeSecretStore secrets;
    FakeSaveDialog dialog;
    FakeUrlOpener browser;
    QThreadPool pages;
    Preferences preferences{temporary.filePath(QStringLiteral("settings.ini"))};
};
