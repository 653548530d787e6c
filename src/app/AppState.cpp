#include "AppState.h"

#include "AutoPrune.h"
#include "ClipboardMonitor.h"
#include "DebugLog.h"
#include "Services.h"

using namespace Qt::StringLiterals;

AppState::AppState(Services &services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{
}

AppState::~AppState() = default;

void AppState::initialize(ModelContext &modelContext)
{
    if (m_isInitialized)
        return;
    m_isInitialized = true;

    const ClipboardMonitor::Parts parts{modelContext,     *m_services.clipboard,  m_services.http,
                                        m_services.pages, m_services.preferences, m_services.clock};
    m_clipboardMonitor = std::make_unique<ClipboardMonitor>(parts);
    m_clipboardMonitor->startMonitoring();
    performAutoPrune(modelContext);
}

void AppState::stop()
{
    if (m_clipboardMonitor)
        m_clipboardMonitor->stopMonitoring();
}

void AppState::performAutoPrune(ModelContext &modelContext)
{
    const auto pruned = pruneOldLinks(modelContext, m_services.preferences, m_services.clock.now());
    if (!pruned)
        debugLog(u"Auto-prune failed: "_s + description(pruned.error()));
    else if (pruned->count > 0)
        debugLog(u"Pruned %1 links older than %2 days"_s.arg(pruned->count).arg(pruned->days));
}
