// SPDX-License-Identifier: MIT
#include "LocalMLService.h"

#include "AppInfo.h"
#include "Clock.h"
#include "SummaryText.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr int loadingSteps = 10;
constexpr auto loadingStep = 100ms;

QString configuredModelName(const AppInfo &info)
{
    const auto unexpanded = u"$(ML_MODEL_NAME)"_s;
    const QString name = info.value(u"MLModelName"_s).value_or(unexpanded);
    return name == unexpanded ? u"mlx-community/Qwen2.5-0.5B-Instruct-4bit"_s : name;
}

} // namespace

QString description(const LocalMLError &error)
{
    switch (error.kind) {
    case LocalMLError::Kind::modelLoadFailed:
        return u"Failed to load AI model: "_s + error.message;
    case LocalMLError::Kind::inferenceFailed:
        return u"AI processing failed: "_s + error.message;
    case LocalMLError::Kind::intelNotSupported:
        return u"AI summarization requires Apple Silicon (M1 or later)."_s;
    case LocalMLError::Kind::modelNotLoaded:
        return u"AI model not loaded. Please wait for initialization."_s;
    }
    Q_UNREACHABLE();
}

LocalMLService::LocalMLService(const AppInfo &info, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_modelName(configuredModelName(info))
{
}

Task<ModelLoad> LocalMLService::loadModel(std::function<void(double)> progress)
{
    if (m_isModelLoaded)
        co_return ModelLoad();
    m_loadingProgress = 0.0;
    m_lastError = QString();
    for (int step = 1; step <= loadingSteps; ++step) {
        Sleep sleep(m_clock, loadingStep);
        co_await sleep;
        m_loadingProgress = step / double(loadingSteps);
        if (progress)
            progress(m_loadingProgress);
    }
    m_isModelLoaded = true;
    co_return ModelLoad();
}

Expected<QString, LocalMLError> LocalMLService::generateSummary(const EvidencePacket &packet)
{
    if (!m_isModelLoaded)
        return Unexpected{LocalMLError{LocalMLError::Kind::modelNotLoaded}};
    m_isProcessing = true;
    const auto idle = qScopeGuard([this] { m_isProcessing = false; });
    return composeSummary(packet);
}
