// SPDX-License-Identifier: MIT
#include "CurlHttpClient.h"
#include "FakeClock.h"
#include "LoopbackServer.h"
#include "Preferences.h"
#include "Rows.h"
#include "SignedFeed.h"
#include "SystemPackages.h"
#include "UpdaterManager.h"

#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <sodium.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = UpdateError::Kind;
using Failure = std::optional<Kind>;

namespace
{

/// A key pair that signs as the minisign program does.
class Signer
{
public:
    explicit Signer(QByteArray id)
        : m_id(std::move(id))
    {
        crypto_sign_keypair(data(m_public), data(m_secret));
    }
    MinisignKey key() const { return *MinisignKey::parse(encoded("Ed", m_public)); }
    QByteArray sign(const QByteArray &message, const QByteArray &comment = "at noon") const
    {
        QByteArray hash(64, '\0');
        crypto_generichash(data(hash), 64, data(message), message.size(), nullptr, 0);
        const QByteArray signature = raw(hash);
        return "untrusted comment: none\n" + encoded("ED", signature)
            + "\ntrusted comment: " + comment + '\n' + raw(signature + comment).toBase64() + '\n';
    }

private:
    static unsigned char *data(const QByteArray &bytes)
    {
        return reinterpret_cast<unsigned char *>(const_cast<char *>(bytes.data()));
    }
    QByteArray encoded(const QByteArray &algorithm, const QByteArray &bytes) const
    {
        return QByteArray(algorithm + m_id + bytes).toBase64();
    }
    QByteArray raw(const QByteArray &message) const
    {
        QByteArray signature(crypto_sign_BYTES, '\0');
        crypto_sign_detached(data(signature), nullptr, data(message), message.size(),
                             data(m_secret));
        return signature;
    }

    QByteArray m_id;
    QByteArray m_public = QByteArray(crypto_sign_PUBLICKEYBYTES, '\0');
    QByteArray m_secret = QByteArray(crypto_sign_SECRETKEYBYTES, '\0');
};

QByteArray feed(const QByteArray &sequence = "7",
                const QByteArray &expires = "2023-11-15T00:00:00Z",
                const QByteArray &page = "https://strandloom.example/2")
{
    return R"({"sequence":)" + sequence + R"(,"expires":")" + expires
        + R"(","version":"2.0","releasePage":")" + page + R"(","notes":"New"})";
}

LoopbackServer::Answer redirect(const QByteArray &to)
{
    return LoopbackServer::reply(302, "elsewhere", "Location: " + to + "\r\n");
}

QByteArray edited(QByteArray text, const QByteArray &before, const QByteArray &after)
{
    return text.replace(before, after);
}

} // namespace

class UpdatesTest : public QObject
{
    Q_OBJECT

    const Signer m_signer{"12345678"};
    const FakeClock m_clock; // 2023-11-14

private Q_SLOTS:
    void checksWhatMinisignSigned()
    {
        // Made by minisign 0.11: `minisign -S`, and with -l.
        const auto key =
            MinisignKey::parse("RWTIEBfsD/xHRSe+7OHXjE6JySrg3+p0kDF0aCZd1R1MPrU7maPriiXi");
        const QByteArray hashed =
            "untrusted comment: signature from minisign secret key\n"
            "RUTIEBfsD/xHRcmcdVyWwKFbBf8YoLiMuBxc81iB7TosslRm16Q/f61ye7TzaCvKkB3Kgk8ug4rea6JsOGWkI/"
            "hCbkD9UB5dlAQ=\n"
            "trusted comment: timestamp:1 file:feed\n"
            "3BVnUNxPsLMPoMMBe4Uk+51dGwAglTamx2YvdI0RFnxrI+o/NXJGFMRGi/Uuw1IH2B6fN2e+bUoK//"
            "3Upf/sDg==\n";
        const QByteArray older =
            "untrusted comment: signature from minisign secret key\r\n"
            "RWTIEBfsD/xHRb5iCjoSDRNkdp+lHdeGjNAVTcZQV7zBnWgS4uQ25zZADDRiORMhsJPeXCm5SUXpeuRoGJp6V"
            "my1IA71NpmYTgk=\r\n"
            "trusted comment: legacy\r\n"
            "yhBemJ53DfRKmFI8YVgA2NTHIqsl4biPetJAdsdrvRRtELcHm3e3e6mngF9aQ5IoOCpNAd2UL3JoHBfjbpq7A"
            "g==\r\n";
        QVERIFY(key);
        for (const QByteArray &signature : {hashed, older}) {
            QCOMPARE(checkMinisign(R"({"a":1})", signature, {*key}), SignatureCheck::valid);
            QCOMPARE(checkMinisign(R"({"a":2})", signature, {*key}), SignatureCheck::wrong);
        }
        QVERIFY(!MinisignKey::parse("RWTIEBfs"));
    }

    void believesOnlyGoodFeeds()
    {
        const QByteArray good = m_signer.sign(feed());
        const Rows<QByteArray, QByteArray, Failure> rows{
            {"good", feed(), m_signer.sign(feed())},
            {"no signature", feed(), "", Kind::notSigned},
            {"a web page for a signature", feed(), "<html>\n\n\n\n</html>", Kind::notSigned},
            {"cut short", feed(), good.first(good.size() - 8), Kind::notSigned},
            {"another's signature", feed(), Signer("87654321").sign(feed()), Kind::unknownKey},
            {"another's under our name", feed(), Signer("12345678").sign(feed()),
             Kind::wrongSignature},
            {"changed", feed("8"), good, Kind::wrongSignature},
            {"changed comment", feed(), edited(good, "noon", "nine"), Kind::wrongSignature},
            {"hashed passed off as not", feed(),
             edited(good, QByteArray("ED123").toBase64().first(4),
                    QByteArray("Ed123").toBase64().first(4)),
             Kind::wrongSignature},
            {"not JSON", "2.0", m_signer.sign("2.0"), Kind::notJson},
            {"nested without end", QByteArray(60'000, '['), m_signer.sign(QByteArray(60'000, '[')),
             Kind::notJson},
            {"a list", "[]", m_signer.sign("[]"), Kind::notJson},
            {"empty", "{}", m_signer.sign("{}"), Kind::incomplete},
            {"part of a sequence", feed("7.5"), m_signer.sign(feed("7.5")), Kind::incomplete},
            {"negative sequence", feed("-1"), m_signer.sign(feed("-1")), Kind::incomplete},
            {"sequence too large", feed("1e30"), m_signer.sign(feed("1e30")), Kind::incomplete},
            {"no time zone", feed("7", "2023-11-15T00:00:00"),
             m_signer.sign(feed("7", "2023-11-15T00:00:00")), Kind::incomplete},
            {"no date", feed("7", "soon"), m_signer.sign(feed("7", "soon")), Kind::incomplete},
            {"page not secure", feed("7", "2023-11-15T00:00:00Z", "http://a.example/"),
             m_signer.sign(feed("7", "2023-11-15T00:00:00Z", "http://a.example/")),
             Kind::incomplete},
            {"page runs a program", feed("7", "2023-11-15T00:00:00Z", "file:///bin/sh"),
             m_signer.sign(feed("7", "2023-11-15T00:00:00Z", "file:///bin/sh")), Kind::incomplete},
            {"no version", edited(feed(), "2.0", "2.0-beta"),
             m_signer.sign(edited(feed(), "2.0", "2.0-beta")), Kind::incomplete},
            {"expired", feed("7", "2023-11-14T22:13:20Z"),
             m_signer.sign(feed("7", "2023-11-14T22:13:20Z")), Kind::expired},
            {"replayed", feed("4"), m_signer.sign(feed("4")), Kind::replayed},
            {"seen before", feed("5"), m_signer.sign(feed("5"))},
        };
        for (const auto &[document, signature, failure] : rows) {
            const QList<MinisignKey> keys{Signer("abcdefgh").key(), m_signer.key()};
            const auto read = readFeed(document, signature, {keys, m_clock.now(), 5});
            QCOMPARE(read ? Failure() : Failure(read.error().kind), failure);
            if (read)
                QCOMPARE(read->version, QVersionNumber(2, 0));
            else
                QVERIFY(description(read.error()).endsWith(u'.'));
        }
    }

    void tellsWhatComesOfACheck()
    {
        QTemporaryDir folder;
        LoopbackServer server;
        CurlHttpClient http;
        FakeClock clock;
        const auto serve = [&](const QByteArray &document) {
            server.on("/feed", LoopbackServer::reply(200, document));
            server.on("/feed.minisig", LoopbackServer::reply(200, m_signer.sign(document)));
        };
        const auto controller = [&](const char *current) {
            const FeedSource source{QUrl(QString::fromLatin1(server.url("/feed"))),
                                    {m_signer.key()},
                                    folder.filePath(u"sequence"_s)};
            return std::make_unique<SignedFeed>(
                http, clock, source, QVersionNumber::fromString(QLatin1StringView(current)));
        };
        const auto lastOf = [](const QSignalSpy &told) {
            return told.isEmpty() ? UpdateStatus{UpdateStatus::Kind::checking}
                                  : told.last().first().value<UpdateStatus>();
        };

        auto feedOf1 = controller("1.0");
        QSignalSpy told(feedOf1.get(), &UpdateController::statusChanged);
        feedOf1->checkForUpdatesInBackground();
        feedOf1->checkForUpdates(); // waits for what runs
        QTRY_COMPARE(lastOf(told).kind, UpdateStatus::Kind::failed);
        QCOMPARE(told.size(), 2);
        QCOMPARE(server.requests().size(), 1);

        serve(feed());
        feedOf1->checkForUpdatesInBackground();
        QTRY_COMPARE(lastOf(told).kind, UpdateStatus::Kind::newVersion);
        QCOMPARE(lastOf(told).version, u"2.0"_s);
        QCOMPARE(lastOf(told).notes, u"New"_s);
        QCOMPARE(lastOf(told).releasePage, u"https://strandloom.example/2"_s);
        QVERIFY(server.requests().last().contains("User-Agent: strandloom/" STRANDLOOM_VERSION));

        feedOf1->setAutomaticallyChecksForUpdates(true);
        clock.advance(25h); // which is past the feed's end, and in the background
        QTRY_COMPARE(server.requests().size(), 5);
        feedOf1->checkForUpdates();
        QTRY_COMPARE(lastOf(told).kind, UpdateStatus::Kind::failed);
        QCOMPARE(lastOf(told).reason, description({Kind::expired}));
        QCOMPARE(told.size(), 5);

        serve(feed("6", "2023-12-01T00:00:00Z"));
        const auto feedOf2 = controller("2"); // which knows from the file what was seen
        QSignalSpy toldLater(feedOf2.get(), &UpdateController::statusChanged);
        feedOf2->checkForUpdates();
        QTRY_COMPARE(lastOf(toldLater).reason, description({Kind::replayed}));
        serve(feed("8", "2023-12-01T00:00:00Z"));
        feedOf2->checkForUpdates();
        QTRY_COMPARE(lastOf(toldLater).kind, UpdateStatus::Kind::upToDate);

        const auto feedOf3 =
            controller("1.0"); // which tells of a version once, however often it checks
        QSignalSpy toldAgain(feedOf3.get(), &UpdateController::statusChanged);
        const auto requests = server.requests().size();
        QTRY_VERIFY(
            (feedOf3->checkForUpdatesInBackground(), server.requests().size() >= requests + 6));
        QCOMPARE(toldAgain.size(), 1);
    }

    void saysWhyAFeedCannotBeFetched()
    {
        const auto reply = LoopbackServer::reply(200, feed());
        const auto none = LoopbackServer::reply(404, {});
        const auto hangUp = [](QTcpSocket &socket, const QByteArray &) { socket.abort(); };
        const Rows<LoopbackServer::Answer, LoopbackServer::Answer, Kind> rows{
            {"missing", none, none, Kind::missing},
            {"unsigned", reply, none, Kind::notSigned},
            {"oversized", LoopbackServer::reply(200, QByteArray(70'000, ' ')), none,
             Kind::oversized},
            {"oversized signature", reply, LoopbackServer::reply(200, QByteArray(70'000, ' ')),
             Kind::oversized},
            {"redirected to http", redirect("http://127.0.0.1:9/"), none, Kind::refused},
            {"server at a loss", LoopbackServer::reply(503, {}), none, Kind::unreachable},
            {"hung up", LoopbackServer::Answer(hangUp), none, Kind::unreachable},
        };
        for (const auto &[feedAnswer, signatureAnswer, kind] : rows) {
            LoopbackServer server(LoopbackServer::Scheme::https);
            server.on("/feed", feedAnswer);
            server.on("/feed.minisig", signatureAnswer);
            CurlHttpClient http(HttpNetwork{isPublicAddress, server.caFile()});
            FakeClock clock;
            const FeedSource source{QUrl(QString::fromLatin1(server.url("/feed"))),
                                    {m_signer.key()},
                                    u"/nonexistent/sequence"_s};
            SignedFeed controller(http, clock, source, QVersionNumber(1));
            QSignalSpy told(&controller, &UpdateController::statusChanged);
            controller.checkForUpdates();
            QTRY_COMPARE_WITH_TIMEOUT(told.size(), 2, 15'000);
            const QString reason = told.last().first().value<UpdateStatus>().reason;
            if (kind == Kind::unreachable)
                QVERIFY(reason.startsWith(description({kind}).section(u'%', 0, 0)));
            else
                QCOMPARE(reason, description({kind}));
        }
    }

    void keepsPreferenceAndControllerInStep()
    {
        struct Switches final : UpdateController {
            void setAutomaticallyChecksForUpdates(bool on) override { checks = on; }
            void setAutomaticallyDownloadsUpdates(bool on) override { downloads = on; }
            void checkForUpdatesInBackground() override { ++backgroundChecks; }
            void checkForUpdates() override { ++userChecks; }
            std::optional<bool> checks, downloads;
            int backgroundChecks = 0, userChecks = 0;
        };
        QTemporaryDir folder;
        Preferences preferences(folder.filePath(u"settings.ini"_s));
        Switches first, second;
        UpdaterManager manager(preferences);
        manager.checkForUpdates(); // nothing there yet
        manager.start(first);
        QCOMPARE(first.checks, std::optional(false));
        QCOMPARE(first.backgroundChecks, 0);
        QVERIFY(!preferences.boolean(preferenceKeys::autoInstallUpdates));
        manager.setAutoInstallUpdates(true);
        QCOMPARE(preferences.boolean(preferenceKeys::autoInstallUpdates), std::optional(true));
        QCOMPARE(first.checks, std::optional(true));
        QCOMPARE(first.downloads, std::optional(true));
        QCOMPARE(first.backgroundChecks, 0);
        manager.checkForUpdates();
        QCOMPARE(first.userChecks, 1);

        UpdaterManager next(preferences);
        next.start(second);
        QCOMPARE(second.downloads, std::optional(true));
        QCOMPARE(second.backgroundChecks, 1);
    }
};

QTEST_GUILESS_MAIN(UpdatesTest)
#include "UpdatesTest.moc"
