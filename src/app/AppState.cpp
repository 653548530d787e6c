// SPDX-License-Identifier: MIT
#include "AppState.h"

#include "AutoPrune.h"
#include "ClipboardMonitor.h"
#include "DebugLog.h"
#include "MakeClipboardSource.h"
#include "Services.h"
#include "StoreReader.h"
#include "YieldDisk.h"
#include "async/OnPool.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// A session that begins has other things to read from the disk.
constexpr auto checkDelay = 5min;
constexpr auto checkInterval = 7 * 24h;

} // namespace

AppState::AppState(Services &services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{
}

AppState::~AppState() = default;

void AppState::initialize()
{
    if (m_isInitialized)
        return;
    m_isInitialized = true;

    m_services.clipboard = makeClipboardSource();
    const ClipboardMonitor::Dependencies dependencies{
        m_services.modelContext, *m_services.clipboard,  m_services.http,
        m_services.pages,        m_services.preferences, m_services.clock};
    m_clipboardMonitor = std::make_unique<ClipboardMonitor>(dependencies);
    connect(&m_services.modelContext, &ModelContext::excludedDomainsChanged,
            m_clipboardMonitor.get(), &ClipboardMonitor::loadExcludedDomains);
    m_clipboardMonitor->startMonitoring();
    m_clipboardMonitor->setPaused(m_isCapturingPaused);
    startScheduler();
    performAutoPrune();
    m_tasks.start(initializeAIModel());
}

void AppState::checkStore(const QString &folder, bool wasLeftOpen)
{
    if (wasLeftOpen)
        m_services.preferences.set(preferenceKeys::lastStoreCheckDate, Instant());
    if (isCheckDue())
        m_tasks.start(findDamage(folder));
}

bool AppState::isCheckDue() const
{
    const auto last = m_services.preferences.date(preferenceKeys::lastStoreCheckDate);
    const Instant now = m_services.clock.now();
    return !last || *last > now || now - *last >= checkInterval;
}

/// Another reason why the file cannot be read shows where it is used.
Task<> AppState::findDamage(QString folder)
{
    using Verdict = Expected<void, StoreError>;
    Sleep untilItIsQuiet(m_services.clock, checkDelay);
    co_await untilItIsQuiet;
    OnPool<Verdict> reading(m_services.storeChecks, [folder] {
        yieldDisk();
        return checkIntegrity(folder);
    });
    const Verdict verdict = co_await reading;
    if (verdict) {
        m_services.preferences.set(preferenceKeys::lastStoreCheckDate, m_services.clock.now());
        co_return;
    }
    debugLog(u"Failed to check the store: "_s + description(verdict.error()));
    m_isStoreDamaged = verdict.error().kind == StoreError::Kind::damaged;
}

void AppState::startScheduler()
{
    EmailScheduler &scheduler = m_services.scheduler;
    scheduler.setModelContext(&m_services.modelContext);
    scheduler.scheduleNextEmail();
    scheduler.checkAndSendIfNeeded();
}

void AppState::setCapturingPaused(bool isPaused)
{
    m_isCapturingPaused = isPaused;
    if (m_clipboardMonitor)
        m_clipboardMonitor->setPaused(isPaused);
}

void AppState::stop()
{
    if (m_clipboardMonitor)
        m_clipboardMonitor->stopMonitoring();
}

void AppState::performAutoPrune()
{
    const auto pruned =
        pruneOldLinks(m_services.modelContext, m_services.preferences, m_services.clock.now());
    if (!pruned)
        debugLog(u"Auto-prune failed: "_s + description(pruned.error()));
    else if (pruned->count > 0)
        debugLog(u"Pruned %1 links older than %2 days"_s.arg(pruned->count).arg(pruned->days));
}

Task<> AppState::initializeAIModel()
{
    m_isModelLoading = true;
    m_modelLoadProgress = 0.0;
    m_modelLoadError = std::nullopt;
    const std::function<void(double)> progress = [this](double value) {
        m_modelLoadProgress = value;
    };
    const ModelLoad load = co_await m_services.mlService.loadModel(progress);
    if (!load) {
        m_modelLoadError = description(load.error());
        debugLog(u"AI model initialization failed: "_s + description(load.error()));
    }
    m_isModelLoading = false;
}
