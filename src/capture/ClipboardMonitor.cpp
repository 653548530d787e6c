// SPDX-License-Identifier: MIT
#include "ClipboardMonitor.h"

#include "AutoPrune.h"
#include "ClipboardSource.h"
#include "DebugLog.h"
#include "LinkAddress.h"
#include "ModelContext.h"
#include "UrlGate.h"

using namespace Qt::StringLiterals;

ClipboardMonitor::ClipboardMonitor(const Dependencies &dependencies, QObject *parent)
    : QObject(parent)
    , m_dependencies(dependencies)
    , m_titles(dependencies.http, dependencies.pages)
    , m_lastChangeCount(dependencies.clipboard.changeCount()) // before any text is read
{
    loadExcludedDomains();
    autoPruneOldLinks();
    m_dependencies.clipboard.startReading();
}

void ClipboardMonitor::startMonitoring()
{
    if (!m_watch)
        m_watch = connect(&m_dependencies.clipboard, &ClipboardSource::changed, this,
                          &ClipboardMonitor::checkClipboard);
}

void ClipboardMonitor::stopMonitoring()
{
    disconnect(m_watch);
    m_watch = {};
}

void ClipboardMonitor::setPaused(bool isPaused)
{
    if (isPaused == m_isPaused)
        return;
    m_isPaused = isPaused;
    if (isPaused) {
        stopMonitoring();
        m_dependencies.clipboard.stopReading();
    } else {
        m_lastChangeCount = m_dependencies.clipboard.changeCount();
        m_dependencies.clipboard.startReading();
        startMonitoring();
    }
}

void ClipboardMonitor::loadExcludedDomains()
{
    const auto domains = m_dependencies.modelContext.excludedDomains();
    if (!domains)
        return; // the list as it was is better than none
    m_excludedDomains.clear();
    for (const ExcludedDomain &excluded : *domains)
        m_excludedDomains.append(excluded.domain);
}

void ClipboardMonitor::autoPruneOldLinks()
{
    const auto pruned = pruneOldLinks(m_dependencies.modelContext, m_dependencies.preferences,
                                      m_dependencies.clock.now());
    if (!pruned)
        debugLog(u"Failed to auto-prune: "_s + description(pruned.error()));
    else if (pruned->count > 0)
        debugLog(u"Auto-pruned %1 old links"_s.arg(pruned->count));
}

void ClipboardMonitor::checkClipboard()
{
    const qint64 count = m_dependencies.clipboard.changeCount();
    if (count == m_lastChangeCount)
        return;
    m_lastChangeCount = count; // first of all: what is refused below must not be looked at again

    const auto text = m_dependencies.clipboard.text();
    if (!text)
        return;
    const auto address = webAddressIn(*text);
    if (!address)
        return;

    const QString url = normalizedUrl(*address);
    if (isRapidDuplicate(url)) {
        debugLog(u"Skipping rapid duplicate URL: " + url); // its five seconds run on from the first
    } else if (isExcluded(url, m_excludedDomains)) {
        debugLog(u"Skipping excluded domain: " + url);
    } else if (isStored(url)) {
        debugLog(u"Skipping existing URL: " + url);
        remember(url);
    } else {
        capture(url);
    }
}

bool ClipboardMonitor::isRapidDuplicate(const QString &url) const
{
    return m_lastCopiedURL == url && m_lastCopiedTime
        && m_dependencies.clock.now() - *m_lastCopiedTime < duplicateThreshold;
}

bool ClipboardMonitor::isStored(const QString &url) const
{
    const auto count = m_dependencies.modelContext.countWithUrl(url);
    if (!count) {
        debugLog(u"Failed to check URL existence: "_s + description(count.error()));
        return false; // a link twice is better than a link lost
    }
    return *count > 0;
}

void ClipboardMonitor::capture(const QString &url)
{
    CapturedLink link;
    link.id = QUuid::createUuid();
    link.url = url;
    link.copiedAt = m_dependencies.clock.now();
    m_dependencies.modelContext.insert(link);
    const auto &reason = m_dependencies.modelContext.unsavedReason();
    if (reason && reason->kind != StoreError::Kind::full)
        debugLog(u"Captured link, only in memory: " + url + u": " + description(*reason));
    else
        debugLog(u"Captured link: " + url);
    remember(url);
    m_tasks.start(m_titles.fetchTitle(&m_dependencies.modelContext, link.id));
}

void ClipboardMonitor::remember(const QString &url)
{
    m_lastCopiedURL = url;
    m_lastCopiedTime = m_dependencies.clock.now();
}
