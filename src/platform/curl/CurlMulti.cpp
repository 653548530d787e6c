// SPDX-License-Identifier: MIT
#include "CurlMulti.h"

#include <QSocketNotifier>

#include <algorithm>
#include <vector>

namespace
{

/// It may be a notifier's own signal that ends it.
void retire(QSocketNotifier *notifier)
{
    if (!notifier)
        return;
    notifier->setEnabled(false);
    notifier->deleteLater();
}

} // namespace

void CurlMulti::initializeLibrary()
{
    static const CURLcode initialized = curl_global_init(CURL_GLOBAL_DEFAULT);
    Q_UNUSED(initialized)
}

CurlMulti::CurlMulti()
{
    initializeLibrary();
    m_multi = curl_multi_init();
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlMulti::socketChanged);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlMulti::timerChanged);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, 4L);
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
}

CurlMulti::~CurlMulti()
{
    for (const auto &[transfer, finished] : m_transfers)
        curl_multi_remove_handle(m_multi, transfer);
    curl_multi_cleanup(m_multi);
}

void CurlMulti::add(CURL *transfer, Finished finished)
{
    m_transfers.emplace(transfer, std::move(finished));
    curl_multi_add_handle(m_multi, transfer);
}

void CurlMulti::remove(CURL *transfer)
{
    if (m_transfers.erase(transfer) > 0)
        curl_multi_remove_handle(m_multi, transfer);
}

int CurlMulti::timerChanged(CURLM *, long milliseconds, void *self)
{
    QTimer &timer = static_cast<CurlMulti *>(self)->m_timer;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(int(std::min(milliseconds, 1'000'000L)));
    return 0;
}

int CurlMulti::socketChanged(CURL *, curl_socket_t socket, int wanted, void *self, void *)
{
    if (wanted == CURL_POLL_REMOVE)
        static_cast<CurlMulti *>(self)->unwatch(socket);
    else
        static_cast<CurlMulti *>(self)->watch(socket, wanted);
    return 0;
}

void CurlMulti::watch(curl_socket_t socket, int wanted)
{
    const auto enable = [&](QSocketNotifier *&notifier, QSocketNotifier::Type type, int poll,
                            int event) {
        const bool isWanted = (wanted & poll) != 0;
        if (!notifier && isWanted) {
            notifier = new QSocketNotifier(socket, type, this);
            connect(notifier, &QSocketNotifier::activated, this,
                    [this, socket, event] { act(socket, event); });
        }
        if (notifier)
            notifier->setEnabled(isWanted);
    };
    Notifiers &notifiers = m_sockets[socket];
    enable(notifiers.reading, QSocketNotifier::Read, CURL_POLL_IN, CURL_CSELECT_IN);
    enable(notifiers.writing, QSocketNotifier::Write, CURL_POLL_OUT, CURL_CSELECT_OUT);
}

void CurlMulti::unwatch(curl_socket_t socket)
{
    const auto found = m_sockets.find(socket);
    if (found == m_sockets.end())
        return;
    retire(found->second.reading);
    retire(found->second.writing);
    m_sockets.erase(found);
}

void CurlMulti::act(curl_socket_t socket, int events)
{
    int running = 0;
    curl_multi_socket_action(m_multi, socket, events, &running);
    reportFinished();
}

/// Everything is taken out first, because what is called may add, remove or destroy.
void CurlMulti::reportFinished()
{
    std::vector<std::pair<Finished, CURLcode>> done;
    int left = 0;
    while (const CURLMsg *const message = curl_multi_info_read(m_multi, &left)) {
        CURL *const transfer = message->easy_handle;
        const CURLcode code = message->data.result;
        const auto found = m_transfers.find(transfer);
        done.emplace_back(std::move(found->second), code);
        m_transfers.erase(found);
        curl_multi_remove_handle(m_multi, transfer);
    }
    for (const auto &[finished, code] : done)
        finished(code);
}
