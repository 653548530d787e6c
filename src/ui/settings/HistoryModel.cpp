// SPDX-License-Identifier: MIT
#include "settings/HistoryModel.h"

#include "DebugLog.h"
#include "ModelContext.h"

using namespace Qt::StringLiterals;

HistoryModel::HistoryModel(ModelContext &modelContext, QObject *parent)
    : QObject(parent)
    , m_modelContext(modelContext)
{
    connect(&m_modelContext, &ModelContext::changed, this, &HistoryModel::changed);
}

qint64 HistoryModel::count() const
{
    return m_modelContext.counts().stored;
}

void HistoryModel::clear()
{
    const qint64 cleared = count();
    if (const auto removed = m_modelContext.removeAll(); !removed)
        debugLog(u"Failed to clear the history: "_s + description(removed.error()));
    else
        debugLog(u"Cleared %1 links from history"_s.arg(cleared));
}
