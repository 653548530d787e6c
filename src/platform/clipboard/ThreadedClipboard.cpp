// SPDX-License-Identifier: MIT
#include "ThreadedClipboard.h"

#include "DebugLog.h"

#include <QDeadlineTimer>
#include <QSemaphore>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// A display server that hangs must not hold the main thread for longer.
constexpr auto readingPatience = 40ms;

QString limitationOf(ClipboardReach reach)
{
    switch (reach) {
    case ClipboardReach::dataControl:
    case ClipboardReach::x11:
    case ClipboardReach::sharedX11:
        return {};
    case ClipboardReach::x11Programs:
        return ThreadedClipboard::tr(
            "This desktop shows Strandloom only what is copied in X11 programs. "
            "Links copied elsewhere are not recorded.");
    case ClipboardReach::none:
        return ThreadedClipboard::tr(
            "Strandloom cannot watch the clipboard here: the compositor offers no "
            "data-control interface and no X server answers. Links are not recorded.");
    }
    Q_UNREACHABLE();
}

QString meansOf(ClipboardReach reach)
{
    switch (reach) {
    case ClipboardReach::dataControl:
        return u"Wayland data control, which the compositor offers."_s;
    case ClipboardReach::x11:
        return u"X11, since this is no Wayland session."_s;
    case ClipboardReach::sharedX11:
        return u"X11, since the compositor offers no data control but shares all copies with X11 "
               "programs."_s;
    case ClipboardReach::x11Programs:
        return u"X11, since the compositor offers no data control."_s;
    case ClipboardReach::none:
        return {};
    }
    Q_UNREACHABLE();
}

} // namespace

ThreadedClipboard::ThreadedClipboard(std::unique_ptr<ClipboardWorker> worker, QObject *parent)
    : ClipboardSource(parent)
    , m_thread(new QThread)
    , m_worker(worker.release())
{
    m_worker->moveToThread(m_thread);
    connect(m_thread, &QThread::started, m_worker, &ClipboardWorker::start);
    connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater); // still over there
    connect(m_worker, &ClipboardWorker::copied, this, &ThreadedClipboard::show);
    connect(m_worker, &ClipboardWorker::fetched, this, &ThreadedClipboard::fetched);
    connect(m_worker, &ClipboardWorker::reachKnown, this, &ThreadedClipboard::setReach);

    m_silence.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] { setReach(ClipboardReach::none); });
    m_silence.start(3s);
    m_thread->setObjectName(u"clipboard"_s);
    m_thread->start();
}

ThreadedClipboard::~ThreadedClipboard()
{
    m_thread->quit();
    if (m_thread->wait(QDeadlineTimer(1s))) {
        delete m_thread;
        return;
    }
    debugLog(u"The display server hangs: the clipboard's thread is left behind"_s);
    connect(m_thread, &QThread::finished, m_thread, &QObject::deleteLater);
}

void ThreadedClipboard::setText(const QString &text)
{
    QMetaObject::invokeMethod(
        m_worker, [worker = m_worker, text] { worker->setText(text); }, Qt::QueuedConnection);
}

void ThreadedClipboard::startReading()
{
    const auto started = std::make_shared<QSemaphore>(); // the thread may be left behind with it
    connect(
        m_worker, &ClipboardWorker::readingStarted, m_worker, [started] { started->release(); },
        Qt::ConnectionType(Qt::DirectConnection | Qt::SingleShotConnection));
    QMetaObject::invokeMethod(m_worker, &ClipboardWorker::startReading, Qt::QueuedConnection);
    started->tryAcquire(1, std::chrono::milliseconds(readingPatience).count());
}

void ThreadedClipboard::stopReading()
{
    QMetaObject::invokeMethod(m_worker, &ClipboardWorker::stopReading, Qt::QueuedConnection);
}

void ThreadedClipboard::fetch()
{
    QMetaObject::invokeMethod(m_worker, &ClipboardWorker::fetch, Qt::QueuedConnection);
}

void ThreadedClipboard::show(const ClipboardSnapshot &snapshot)
{
    m_snapshot = snapshot;
    Q_EMIT changed();
}

void ThreadedClipboard::setReach(ClipboardReach reach)
{
    m_silence.stop();
    if (reach == m_reach)
        return;
    m_reach = reach;
    Q_EMIT limitationChanged();
}

QString ThreadedClipboard::limitation() const
{
    return m_reach ? limitationOf(*m_reach) : QString();
}

QString ThreadedClipboard::means() const
{
    return m_reach ? meansOf(*m_reach) : QString();
}
