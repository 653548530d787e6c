// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "async/Task.h"

#include <QObject>
#include <QProperty>
#include <QString>

#include <functional>

class AppInfo;
class Clock;
struct EvidencePacket;

struct LocalMLError {
    enum class Kind { modelLoadFailed, inferenceFailed, intelNotSupported, modelNotLoaded };
    Kind kind;
    QString message = {}; ///< with `modelLoadFailed` and `inferenceFailed`: what went wrong
};

/// The error as words for people.
QString description(const LocalMLError &error);

using ModelLoad = Expected<void, LocalMLError>;

/// The model that writes summaries. It has to be loaded before it can be used, which takes a
/// second.
class LocalMLService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isModelLoaded READ isModelLoaded NOTIFY isModelLoadedChanged)
    Q_PROPERTY(bool isProcessing READ isProcessing NOTIFY isProcessingChanged)
    Q_PROPERTY(double loadingProgress READ loadingProgress NOTIFY loadingProgressChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
public:
    /// `clock` outlives the service.
    LocalMLService(const AppInfo &info, Clock &clock, QObject *parent = nullptr);

    /// As the information file names it, else the one that is built in.
    QString modelName() const { return m_modelName; }
    /// True for good once the model was loaded.
    bool isModelLoaded() const { return m_isModelLoaded; }
    bool isProcessing() const { return m_isProcessing; }
    /// Of the current or last load, from 0 to 1.
    double loadingProgress() const { return m_loadingProgress; }
    /// Empty from the start of each load.
    QString lastError() const { return m_lastError; }

    /// Loads the model unless it is loaded, telling `progress` each step. Abandoning the wait ends
    /// the load. Virtual for models that may fail.
    virtual Task<ModelLoad> loadModel(std::function<void(double)> progress = {});
    /// The summary of a page; `modelNotLoaded` before the model is.
    Expected<QString, LocalMLError> generateSummary(const EvidencePacket &packet);

Q_SIGNALS:
    void isModelLoadedChanged();
    void isProcessingChanged();
    void loadingProgressChanged();
    void lastErrorChanged();

private:
    Clock &m_clock;
    const QString m_modelName;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LocalMLService, bool, m_isModelLoaded, false,
                                         &LocalMLService::isModelLoadedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LocalMLService, bool, m_isProcessing, false,
                                         &LocalMLService::isProcessingChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LocalMLService, double, m_loadingProgress, 0.0,
                                         &LocalMLService::loadingProgressChanged)
    Q_OBJECT_BINDABLE_PROPERTY(LocalMLService, QString, m_lastError,
                               &LocalMLService::lastErrorChanged)
};
