// SPDX-License-Identifier: MIT
#include "ResendKeyService.h"

#include "DiagnosticLines.h"
#include "FakeSecretStore.h"
#include "KeyringSession.h"
#include "Rows.h"
#include "SecretServiceStore.h"
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
    void checksWhatIsTyped()
    {
        const QString noPrefix = u"Invalid API key format. Resend keys start with 're_'"_s;
        const QString tooShort = u"API key is too short"_s;
        const QString badAddress = u"Invalid email address format"_s;
        const Rows<QString, QString, QString> rows{
            {"twenty characters in spaces", u" \u2003re_45678901234567890\n"_s, address},
            {"nineteen characters", u"re_4567890123456789"_s, address, tooShort},
            {"clusters count, not code units", u"re_456789012345678e\u0301"_s, address, tooShort},
            {"no prefix, and short", u"sk_1"_s, address, noPrefix},
            {"byte order mark", u"\ufeffre_45678901234567890"_s, address, noPrefix},
            {"prefix in upper case", u"RE_45678901234567890"_s, address, noPrefix},
            {"nothing at all", {}, {}, u"API key cannot be empty"_s},
            {"only space", u" \t\n"_s, address, u"API key cannot be empty"_s},
            {"no address", key, u" \n"_s, u"From email address is required"_s},
            {"line break behind the address", key, u"a@b.de\n"_s},
            {"two letters at the end", key, u"A.b+c%d_e-f@mail.example.co"_s},
            {"one letter at the end", key, u"a@example.c"_s, badAddress},
            {"space inside", key, u"a b@example.com"_s, badAddress},
            {"line break inside", key, u"a@b.de\nx@y.de"_s, badAddress},
            {"no dot", key, u"a@localhost"_s, badAddress},
            {"letters of another script", key, u"ä@example.com"_s, badAddress},
        };
        for (const auto &[key, address, message] : rows) {
            FakeSecretStore secrets;
            ResendKeyService service(secrets);
            QCOMPARE(waitFor(service.saveConfiguration(key, address)), message.isEmpty());
            QCOMPARE(service.validationError().value_or(QString()), message);
            QCOMPARE(service.isConfigured(), message.isEmpty());
            QCOMPARE(secrets.contents.size(), message.isEmpty() ? 2 : 0);
            QCOMPARE(secrets.contents.value(u"resend_api_key"_s),
                     message.isEmpty() ? key.trimmed().toUtf8() : QByteArray());
        }
    }

    void keepsWhatWasSavedForTheNextStart()
    {
        FakeSecretStore secrets;
        ResendKeyService first(secrets);
        QVERIFY(*waitFor(first.saveConfiguration(key, address)));
        QCOMPARE(first.configuredEmail(), address);

        ResendKeyService second(secrets);
        QSignalSpy known(&second, &ResendKeyService::becameKnown);
        second.refresh();
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
        SecretServiceStore secrets(ResendKeyService::serviceName);
        const QList<Secret> both = {{ResendKeyService::apiKeyAccount, key.toUtf8()},
                                    {ResendKeyService::emailAccount, address.toUtf8()}};
        QVERIFY(*waitFor(secrets.write(both)));
        session.killDaemon();
        ResendKeyService service(secrets);
        QSignalSpy known(&service, &ResendKeyService::becameKnown);
        service.refresh();
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
        (void)waitFor(service.apiKey(UnlockPrompt::never));

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
        ResendKeyService service(secrets);
        service.refresh();
        service.removeConfiguration();
        (void)waitFor(service.apiKey(UnlockPrompt::never));
        QVERIFY(!service.isConfigured());
    }
};

QTEST_GUILESS_MAIN(ResendKeyServiceTest)
#include "ResendKeyServiceTest.moc"
