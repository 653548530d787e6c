// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "async/Task.h"

class HttpClient;
class ModelContext;
class QThreadPool;

/// Fetches pages for their titles. Main thread only.
class TitleFetcher
{
public:
    /// Both outlive the fetcher. `pages` has one thread.
    TitleFetcher(HttpClient &http, QThreadPool &pages)
        : m_http(http)
        , m_pages(pages)
    {
    }

    /// Fetches the title of the link `id` and stores it, if the link is still there by then.
    /// `context` outlives the task.
    Task<> fetchTitle(ModelContext *context, LinkId id);
    /// The title of the page at `url`; absent when it has none or cannot be fetched. One request,
    /// without repeats.
    Task<std::optional<QString>> titleOf(QString url);

private:
    HttpClient &m_http;
    QThreadPool &m_pages;
};
