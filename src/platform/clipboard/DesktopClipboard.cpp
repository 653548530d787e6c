// SPDX-License-Identifier: MIT
#include "DesktopClipboard.h"

#include "WaylandClipboard.h"
#include "X11Clipboard.h"

#include <algorithm>
#include <utility>

DesktopClipboard::DesktopClipboard(const ClipboardLimits &limits)
    : m_limits(limits)
    , m_retry(this)
    , m_pause(limits.firstPause)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &DesktopClipboard::start);
}

void DesktopClipboard::start()
{
    tryOut(qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ? System::x11 : System::wayland);
}

void DesktopClipboard::tryOut(System system)
{
    if (system == System::wayland)
        m_worker = std::make_unique<WaylandClipboard>(QByteArray(), m_limits);
    else
        m_worker = std::make_unique<X11Clipboard>(QByteArray(), m_limits);
    connect(m_worker.get(), &ClipboardWorker::copied, this, &ClipboardWorker::copied);
    connect(m_worker.get(), &ClipboardWorker::readingStarted, this,
            &ClipboardWorker::readingStarted);
    connect(m_worker.get(), &ClipboardWorker::fetched, this, &ClipboardWorker::fetched);
    connect(m_worker.get(), &ClipboardWorker::reachKnown, this,
            [this, system](ClipboardReach reach) { reached(system, reach); });
    if (m_isReading)
        m_worker->startReading();
    m_worker->start();
}

void DesktopClipboard::reached(System system, ClipboardReach reach)
{
    if (m_isChosen || reach != ClipboardReach::none) {
        Q_EMIT reachKnown(reach);
        return choose();
    }
    dropWorker();
    if (system == System::wayland)
        return tryOut(System::x11);
    m_retry.start(m_pause);
    m_pause = std::min(m_pause * 2, m_limits.longestPause);
    Q_EMIT reachKnown(reach);
}

void DesktopClipboard::choose()
{
    m_isChosen = true;
    for (const QString &text : std::exchange(m_unclaimed, {}))
        m_worker->setText(text);
}

/// Later, since it is the worker that has just told that it fails.
void DesktopClipboard::dropWorker()
{
    disconnect(m_worker.get(), nullptr, this, nullptr);
    m_worker.release()->deleteLater();
}

void DesktopClipboard::startReading()
{
    m_isReading = true;
    if (m_worker)
        m_worker->startReading();
    else
        Q_EMIT readingStarted();
}

void DesktopClipboard::stopReading()
{
    m_isReading = false;
    if (m_worker)
        m_worker->stopReading();
}

void DesktopClipboard::fetch()
{
    if (m_worker)
        m_worker->fetch();
    else
        Q_EMIT fetched({});
}

void DesktopClipboard::setText(const QString &text)
{
    if (m_isChosen)
        m_worker->setText(text);
    else
        m_unclaimed.append(text);
}
