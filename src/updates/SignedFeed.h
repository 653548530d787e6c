// SPDX-License-Identifier: MIT
#pragma once

#include "UpdateController.h"
#include "UpdateFeed.h"
#include "async/Scope.h"

#include <QUrl>

#include <memory>
#include <optional>

class HttpClient;

/// Where the updates of this installation are announced.
struct FeedSource {
    std::optional<QUrl> address; ///< the signature is beside it, with ".minisig" added
    QList<MinisignKey> keys; ///< each of them is enough
    QString sequenceFile; ///< keeps the highest sequence number seen
};

/// Reads a signed feed, which tells of a new version and the page that offers it. Downloads
/// nothing. While automatic checks are on there is one a day.
class SignedFeed final : public UpdateController
{
    Q_OBJECT
public:
    /// `http` and `clock` outlive the controller.
    SignedFeed(HttpClient &http, Clock &clock, FeedSource source, QVersionNumber current);
    ~SignedFeed() override;

    void setAutomaticallyChecksForUpdates(bool checks) override;
    /// Without effect: the user fetches a new version from its page.
    void setAutomaticallyDownloadsUpdates(bool) override {}
    void checkForUpdatesInBackground() override;
    void checkForUpdates() override;

private:
    using Download = Expected<QByteArray, UpdateError>;
    using FeedResult = Expected<UpdateFeed, UpdateError>;

    void scheduleNextCheck();
    void begin();
    Task<> check();
    Task<FeedResult> fetchFeed();
    Task<Download> download(QUrl address);
    FeedResult accept(const QByteArray &document, const QByteArray &signature);
    void report(const FeedResult &feed);
    void keepSequence(qint64 sequence);

    HttpClient &m_http;
    Clock &m_clock;
    FeedSource m_source;
    QVersionNumber m_current;
    qint64 m_highestSequence;
    bool m_isChecking = false;
    bool m_isUserWaiting = false;
    QVersionNumber m_announced; ///< in the background, which is done once a version
    std::unique_ptr<Alarm> m_nextCheck; ///< null while automatic checks are off
    Scope m_tasks;
};
