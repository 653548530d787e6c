// SPDX-License-Identifier: MIT
#include "async/Semaphore.h"

#include <QHash>

#include <utility>

/// The first permit that is granted and wanted; null when there is none. A granted one stays so
/// until it is given back, because nobody who comes later is counted before.
template <typename Wanted>
Permit *Semaphore::firstGranted(Wanted isWanted) const
{
    std::size_t granted = 0;
    QHash<QByteArray, std::size_t> ofKind;
    for (auto permit = m_permits.begin(); permit != m_permits.end() && granted < m_atOnce;
         ++permit) {
        std::size_t &ofThisKind = ofKind[(*permit)->m_kind];
        if (ofThisKind == m_ofOneKind)
            continue;
        if (isWanted(*permit))
            return *permit;
        ++ofThisKind;
        ++granted;
    }
    return nullptr;
}

bool Semaphore::isGranted(const Permit *permit) const
{
    return firstGranted([permit](const Permit *other) { return other == permit; }) != nullptr;
}

void Semaphore::wakeWaiting()
{
    Permit *const next = firstGranted([](const Permit *permit) { return bool(permit->m_waiter); });
    if (!next)
        return;
    wakeLater(); // first: whoever is woken may destroy much
    std::exchange(next->m_waiter, {}).resume();
}

void Semaphore::wakeLater()
{
    QMetaObject::invokeMethod(
        &m_context, [this] { wakeWaiting(); }, Qt::QueuedConnection);
}

Permit::Permit(Semaphore &semaphore, QByteArray kind)
    : m_semaphore(semaphore)
    , m_kind(std::move(kind))
{
    m_semaphore.m_permits.push_back(this);
}

Permit::~Permit()
{
    m_semaphore.m_permits.remove(this);
    m_semaphore.wakeLater(); // whoever destroys this permit may be about to destroy the next one
}
