// SPDX-License-Identifier: MIT
#include "DiagnosticLines.h"

#include <QLoggingCategory>
#include <QMutex>

namespace
{

QMutex mutex;
QStringList collected;
QtMessageHandler before = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (qstrcmp(context.category, "strandloom") != 0) {
        before(type, context, message);
        return;
    }
    const QMutexLocker locker(&mutex);
    collected.append(message);
}

} // namespace

DiagnosticLines::DiagnosticLines()
{
    collected.clear();
    QLoggingCategory::setFilterRules(QStringLiteral("strandloom.debug=true"));
    before = qInstallMessageHandler(collect);
}

DiagnosticLines::~DiagnosticLines()
{
    qInstallMessageHandler(before);
    QLoggingCategory::setFilterRules(QString());
}

QStringList DiagnosticLines::lines() const
{
    const QMutexLocker locker(&mutex);
    return collected;
}

QStringList DiagnosticLines::take()
{
    const QMutexLocker locker(&mutex);
    return std::exchange(collected, {});
}
