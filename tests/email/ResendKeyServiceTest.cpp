// SPDX-License-Identifier: MIT
#include "ResendKeyService.h"

#include "DiagnosticLines.h"
#include "FakeSecretStore.h"
#include "KeyringSession.h"
#include "LibsecretStore.h"
#include "Waiting.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace
{
const QString key = u"re_canary7890abcdef12"_s;
const QString address = u"me@example.com"_s;
} // namespace

class ResendKeyServiceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void checksWhatIsTyped_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, const QString &typedKey, const QString &typedAddress,
                            const QString &message) {
            QTest::newRow(name) << typedKey << typedAddress << message;
        };
        const QString noPrefix = u"Invalid API key format. Resend keys start with 're_'"_s;
        const QString tooShort = u"API key is too short"_s;
        const QString badAddress = u"Invalid email address format"_s;
        row("twenty characters in spaces", u" \u2003re_45678901234567890\n"_s, address, {});
        row("nineteen characters", u"re_4567890123456789"_s, address, tooShort);
        row("clusters count, not code units", u"re_456789012345678e\u0301"_s, address, tooShort);
        row("no prefix, and short", u"sk_1"_s, address, noPrefix);
        row("byte order mark", u"\ufeffre_45678901234567890"_s, address, noPrefix);
        row("prefix in upper case", u"RE_45678901234567890"_s, address, noPrefix);
        row("nothing at all", {}, {}, u"API key cannot be empty"_s);
        row("only space", u" \t\n"_s, address, u"API key cannot be empty"_s);
        row("no address", key, u" \n"_s, u"From email address is required"_s);
        row("line break behind the address", key, u"a@b.de\n"_s, {});
        row("two letters at the end", key, u"A.b+c%d_e-f@mail.example.co"_s, {});
        row("one letter at the end", key, u"a@example.c"_s, badAddress);
        row("space inside", key, u"a b@example.com"_s, badAddress);
        row("line break inside", key, u"a@b.de\nx@y.de"_s, badAddress);
        row("no dot", key, u"a@localhost"_s, badAddress);
        row("letters of another script", key, u"ä@example.com"_s, badAddress);
    }
    void checksWhatIsTyped()
    {
        QFETCH(QString, key);
        QFETCH(QString, address);
        QFETCH(QString, message);
        FakeSecretStore secrets;
        ResendKeyService service(secrets);
        QCOMPARE(waitFor(service.saveConfiguration(key, address)), message.isEmpty());
        QCOMPARE(service.validationError().value_or(QString()), message);
        QCOMPARE(service.isConfigured(), message.isEmpty());
        QCOMPARE(secrets.contents.size(), message.isEmpty() ? 2 : 0);
        QCOMPARE(secrets.contents.value(u"resend_api_key"_s),
                 message.isEmpty() ? key.trimmed().toUtf8() : QByteArray());
    }

    void keepsWhatWasSavedForTheNextStart()
    {
        FakeSecretStore secrets;
        ResendKeyService first(secrets);
        QVERIFY(*waitFor(first.saveConfiguration(key, address)));
        QCOMPARE(first.configuredEmail(), address);

        ResendKeyService second(secrets);
        QSignalSpy known(&second, &ResendKeyService::becameKnown);
        QVERIFY(!second.isConfigured()); // the keyring answers late
        QVERIFY(known.wait());
        QVERIFY(second.isConfigured());
        QCOMPARE(second.configuredEmail(), address);
        QVERIFY(!secrets.accountsRead.contains(ResendKeyService::apiKeyAccount));
        QCOMPARE(*waitFor(second.apiKey(UnlockPrompt::never)), key);

        second.removeConfiguration();
        QVERIFY(!second.isConfigured() && !second.configuredEmail());
        QTRY_VERIFY(secrets.contents.isEmpty());
        QVERIFY(!*waitFor(second.apiKey(UnlockPrompt::allowed)));
    }

    void readsAKeyringThatComesLateAndIsUnlockedLater()
    {
        KeyringSession session;
        QVERIFY(session.startBus() && session.startUnlocked());
        LibsecretStore secrets(ResendKeyService::serviceName);
        const QList<Secret> both = {{ResendKeyService::apiKeyAccount, key.toUtf8()},
                                    {ResendKeyService::emailAccount, address.toUtf8()}};
        QVERIFY(*waitFor(secrets.write(both)));
        session.killDaemon();
        ResendKeyService service(secrets);
        QSignalSpy known(&service, &ResendKeyService::becameKnown);
        QVERIFY(!*waitFor(service.apiKey(UnlockPrompt::never)));
        QVERIFY(!service.isConfigured());

        QVERIFY(session.startLocked());
        QTRY_VERIFY(service.isConfigured());
        QVERIFY(!service.isKnown());
        QVERIFY(session.unlock());
        QVERIFY(known.wait());
        QCOMPARE(service.configuredEmail(), address);
        service.refresh();
        (void)waitFor(service.apiKey(UnlockPrompt::never));
        QCOMPARE(known.count(), 1);
    }

    void hasItsOutcomeWithoutAKeyring()
    {
        FakeSecretStore secrets;
        secrets.fault = SecretFault::unavailable;
        ResendKeyService service(secrets);
        QSignalSpy known(&service, &ResendKeyService::becameKnown);
        (void)waitFor(service.apiKey(UnlockPrompt::never)); // behind the first reading

        const DiagnosticLines diagnostics;
        QVERIFY(*waitFor(service.saveConfiguration(key, address)));
        QVERIFY(service.isConfigured());
        QCOMPARE(diagnostics.lines(),
                 QStringList{u"Failed to save the email configuration: "
                             "There is no secret service"_s});
        QVERIFY(!*waitFor(service.apiKey(UnlockPrompt::allowed)));
        QVERIFY(known.isEmpty());
    }

    void doesNotBringBackWhatWasRemovedDuringAReading()
    {
        FakeSecretStore secrets;
        secrets.contents = {{u"resend_api_key"_s, key.toUtf8()}};
        ResendKeyService service(secrets); // reads
        service.removeConfiguration();
        (void)waitFor(service.apiKey(UnlockPrompt::never));
        QVERIFY(!service.isConfigured());
    }
};

QTEST_GUILESS_MAIN(ResendKeyServiceTest)
#include "ResendKeyServiceTest.moc"
