// SPDX-License-Identifier: MIT
#pragma once

#include "AppInfo.h"
#include "Desk.h"
#include "LinkListView.h"
#include "LinkRowView.h"
#include "LocalMLService.h"
#include "MenuBarViewModel.h"
#include "SummaryService.h"
#include "WebContentExtractor.h"

#include <QCoreApplication>

/// The panel's model on the desk.
struct TestPanel : Desk {
    LocalMLService mlService{AppInfo(QString()), clock};
    WebContentExtractor extractor{web, pages, clock};
    SummaryService summaries{context(), mlService, extractor, clock};
    MenuBarViewModel model{{context(), clipboard, browser, summaries, web, pages, clock}};

    TestPanel()
    {
        clipboard.startReading();
        pages.setMaxThreadCount(1);
    }
    /// The oldest is number 0.
    void addLinks(int count)
    {
        for (int number = 0; number < count; ++number)
            add(QStringLiteral("https://a.example/%1").arg(number), number);
        settle();
    }
    CapturedLink addSummarized(const QString &url, int seconds, const QString &summary)
    {
        const CapturedLink link = add(url, seconds);
        context().setSummary(link.id, summary);
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
