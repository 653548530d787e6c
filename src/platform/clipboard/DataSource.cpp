// SPDX-License-Identifier: MIT
#include "DataSource.h"

#include "DebugLog.h"
#include "PipeWriter.h"

#include <QUuid>

#include <data-control-client-header.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype maxWriters = 64;

} // namespace

struct DataSourceEvents {
    static constexpr ext_data_control_source_v1_listener listener = {
        [](void *data, ext_data_control_source_v1 *, const char *, int32_t pipe) {
            static_cast<DataSource *>(data)->send(pipe);
        },
        [](void *data, ext_data_control_source_v1 *) {
            static_cast<DataSource *>(data)->m_isCancelled = true;
        },
    };
};

DataSource::DataSource(ext_data_control_manager_v1 *manager, const QString &text,
                       const ClipboardLimits &limits, QObject *writers)
    : m_source(ext_data_control_manager_v1_create_data_source(manager))
    , m_text(text)
    , m_limits(limits)
    , m_writers(writers)
    , m_marker("application/x-strandloom-" + QUuid::createUuid().toByteArray(QUuid::Id128))
{
    ext_data_control_source_v1_add_listener(m_source.get(), &DataSourceEvents::listener, this);
    for (const char *type :
         {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "TEXT", "STRING"})
        ext_data_control_source_v1_offer(m_source.get(), type);
    ext_data_control_source_v1_offer(m_source.get(), m_marker.constData());
}

void DataSource::send(int pipe)
{
    if (m_writers->findChildren<PipeWriter *>().size() < maxWriters) {
        new PipeWriter(pipe, m_text.toUtf8(), m_limits.total, m_writers);
        return;
    }
    debugLog(u"Too many programs ask for the clipboard and do not read it"_s);
    ::close(pipe);
}
