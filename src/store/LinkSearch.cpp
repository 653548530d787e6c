// SPDX-License-Identifier: MIT
#include "LinkSearch.h"

#include "DebugLog.h"
#include "ModelContext.h"
#include "async/YieldToLoop.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstring>
#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr char separator = '\xff'; // in no UTF-8, so nothing is found across it

/// Above this, reading all anew is quicker than looking up each link.
constexpr qsizetype manyLinks = 500;

constexpr int pageSize = 100;

/// How long the main loop is held at a time, by reading: a key that is typed meanwhile waits.
constexpr auto slice = 2ms;

} // namespace

LinkSearch::LinkSearch(const ModelContext &context, const LocalizedSearch &search)
    : m_context(context)
    , m_search(search)
{
    connect(&context, &ModelContext::changed, this, &LinkSearch::apply);
    reload();
}

LinkSearch::~LinkSearch()
{
    m_pages = {};
    malloc_trim(0); // tens of megabytes may be free now, and would stay with the process
}

void LinkSearch::setText(const QString &text)
{
    m_sought = m_search.folded(text);
    findAll();
}

void LinkSearch::reload()
{
    m_pages.clear();
    m_changed.clear();
    m_loading = std::make_unique<Scope>();
    m_loading->start(load());
}

Task<> LinkSearch::load()
{
    m_isReading = true;
    while (m_isReading) {
        readPages();
        Q_EMIT changed({});
        YieldToLoop yield;
        co_await yield;
    }
}

void LinkSearch::readPages()
{
    QElapsedTimer time;
    time.start();
    while (m_isReading && time.elapsed() < slice.count()) {
        const auto last =
            m_pages.empty() ? std::nullopt : std::optional(m_pages.back().links.back());
        const auto links = m_context.visibleNewestFirst(last, pageSize);
        if (!links)
            debugLog(u"Failed to read the links to search: "_s + description(links.error()));
        m_isReading = links && !links->isEmpty();
        if (!m_isReading)
            return;
        m_pages.push_back(pageOf(*links));
        if (m_changed.isEmpty())
            find(m_pages.back());
    }
    if (!m_changed.isEmpty())
        findAll();
}

LinkSearch::Page LinkSearch::pageOf(const QList<CapturedLink> &links) const
{
    Page page;
    for (const CapturedLink &link : links) {
        for (const QString &text :
             {link.url, link.title.value_or(u""_s), link.summary.value_or(u""_s)})
            page.text += m_search.folded(text) + separator;
        page.links.push_back(positionOf(link));
        page.ends.push_back(page.text.size());
    }
    page.text.shrink_to_fit();
    return page;
}

void LinkSearch::findAll()
{
    m_found.clear();
    for (const Page &page : m_pages)
        find(page);
    if (m_changed.isEmpty())
        return;
    std::erase_if(m_found, [this](const auto &found) { return m_changed.contains(found.id); });
    for (const Page &page : std::as_const(m_changed))
        find(page);
    std::sort(m_found.begin(), m_found.end(), comesBefore);
}

/// One look through all texts, not one for each link.
void LinkSearch::find(const Page &page)
{
    const char *const begin = page.text.data();
    const char *const end = begin + page.text.size();
    std::size_t link = 0;
    for (const char *at = begin; at < end; at = begin + page.ends[link++]) {
        const void *const hit = memmem(at, size_t(end - at), m_sought.data(), m_sought.size());
        if (!hit)
            return;
        const auto place = static_cast<const char *>(hit) - begin;
        while (page.ends[link] <= place)
            ++link;
        m_found.push_back(page.links[link]);
    }
}

void LinkSearch::apply(const StoreChange &change)
{
    const QList<LinkId> there = change.inserted + change.updated;
    if (there.size() + change.removed.size() > manyLinks) {
        reload();
    } else {
        for (const LinkId &id : change.removed)
            m_changed.insert(id, {});
        for (const LinkId &id : there) {
            const auto link = m_context.link(id);
            m_changed.insert(id, link && link->isVisible ? pageOf({*link}) : Page());
        }
    }
    findAll();
    Q_EMIT changed(change);
}
