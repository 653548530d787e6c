// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QTimer>

#include <curl/curl.h>
#include <functional>
#include <unordered_map>

class QSocketNotifier;

/// libcurl's transfers on the main loop: no thread of its own, and no work while nothing happens on
/// a socket.
class CurlMulti : public QObject
{
    Q_OBJECT
public:
    using Finished = std::function<void(CURLcode)>;

    /// Once in the life of the process, before anything else uses the library. Any thread.
    static void initializeLibrary();

    CurlMulti();
    ~CurlMulti() override;

    /// Runs `transfer`; `finished` is called once from the main loop, with the transfer taken out.
    void add(CURL *transfer, Finished finished);
    /// Ends `transfer` where it is; its `finished` is never called.
    void remove(CURL *transfer);

private:
    struct Notifiers {
        QSocketNotifier *reading = nullptr;
        QSocketNotifier *writing = nullptr;
    };

    static int socketChanged(CURL *, curl_socket_t socket, int wanted, void *self, void *);
    static int timerChanged(CURLM *, long milliseconds, void *self);
    void watch(curl_socket_t socket, int wanted);
    void unwatch(curl_socket_t socket);
    void act(curl_socket_t socket, int events);
    void reportFinished();

    CURLM *m_multi;
    QTimer m_timer;
    std::unordered_map<curl_socket_t, Notifiers> m_sockets;
    std::unordered_map<CURL *, Finished> m_transfers;
};
