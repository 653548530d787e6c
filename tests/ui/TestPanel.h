// SPDX-License-Identifier: MIT
#pragma once

#include "AppInfo.h"
#include "FakeClipboard.h"
#include "FakeHttpClient.h"
#include "FakeUrlOpener.h"
#include "LinkListView.h"
#include "LinkRowView.h"
#include "LocalMLService.h"
#include "MenuBarViewModel.h"
#include "SummaryService.h"
#include "TestStore.h"
#include "WebContentExtractor.h"

#include <QCoreApplication>
#include <QThreadPool>

/// The panel's model on a real store, with the rest of the desktop in memory.
struct TestPanel {
    TestStore store;
    FakeClipboard clipboard;
    FakeUrlOpener browser;
    FakeHttpClient web;
    QThreadPool pages;
    LocalMLService mlService{AppInfo(QString()), store.clock};
    WebContentExtractor extractor{web, pages, store.clock};
    SummaryService summaries{store.context(), mlService, extractor, store.clock};
    MenuBarViewModel model{
        {store.context(), clipboard, browser, summaries, web, pages, store.clock}};

    TestPanel()
    {
        clipboard.startReading();
        pages.setMaxThreadCount(1);
    }
    /// The oldest is number 0.
    void addLinks(int count)
    {
        for (int number = 0; number < count; ++number)
            store.add(QStringLiteral("https://a.example/%1").arg(number), number);
        settle();
    }
    CapturedLink addSummarized(const QString &url, int seconds, const QString &summary)
    {
        const CapturedLink link = store.add(url, seconds);
        store.context().setSummary(link.id, summary);
        settle();
        return link;
    }
    /// Lets the changes be announced and laid out.
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
};
