// SPDX-License-Identifier: MIT
#include "AppState.h"

#include "AutoPrune.h"
#include "ClipboardMonitor.h"
#include "DebugLog.h"
#include "Services.h"
#include "StoreReader.h"
#include "async/OnPool.h"

using namespace Qt::StringLiterals;

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

void AppState::checkStore(const QString &folder)
{
    m_tasks.start(findDamage(folder));
}

/// Another reason why the file cannot be read shows where it is used.
Task<> AppState::findDamage(QString folder)
{
    using Verdict = Expected<void, StoreError>;
    OnPool<Verdict> reading(m_services.pages, [folder] { return checkIntegrity(folder); });
    const Verdict verdict = co_await reading;
    if (verdict)
        co_return;
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
