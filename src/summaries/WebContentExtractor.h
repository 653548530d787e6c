// SPDX-License-Identifier: MIT
#pragma once

#include "EvidencePacket.h"
#include "Expected.h"
#include "HttpClient.h"
#include "async/Semaphore.h"
#include "async/Task.h"

#include <variant>

class Clock;
class QThreadPool;

enum class ExtractionError {
    invalidURL,
    fetchFailed, ///< the answer's status was none of 200 to 299
    encodingError, ///< never seen: every body can be read as Latin-1
};

/// The error as words for people.
QString description(ExtractionError error);

/// Why there is no packet: our own reason, or what the HTTP client said.
using ExtractionFailure = std::variant<ExtractionError, HttpError>;
QString description(const ExtractionFailure &failure);

/// The text of a page as UTF-8.
std::string pageText(const HttpResponse &response);

/// Fetches web pages and reads their evidence, one page at a time. Main thread only.
class WebContentExtractor
{
public:
    /// All outlive the extractor. Pages are read on a thread of `pages`.
    WebContentExtractor(HttpClient &http, QThreadPool &pages, const Clock &clock);

    /// The page at `url` as it came. Waits for the calls before it.
    Task<Expected<HttpResponse, ExtractionFailure>> fetchPage(QString url);
    /// Waits for the calls before it. `fetchedAt` is when the answer was complete.
    Task<Expected<EvidencePacket, ExtractionFailure>> extract(QString url);

private:
    Task<Expected<HttpResponse, ExtractionFailure>> fetch(QString url);

    HttpClient &m_http;
    QThreadPool &m_pages;
    const Clock &m_clock;
    Semaphore m_calls;
};
