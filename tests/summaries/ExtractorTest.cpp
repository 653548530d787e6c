// SPDX-License-Identifier: MIT
#include "AppInfo.h"
#include "FakeClock.h"
#include "FakeHttpClient.h"
#include "LocalMLService.h"
#include "Rows.h"
#include "Waiting.h"
#include "WebContentExtractor.h"

#include <QTemporaryFile>
#include <QTest>
#include <QThreadPool>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

Task<> note(WebContentExtractor &extractor, QString url, QStringList *log)
{
    const auto packet = co_await extractor.extract(url);
    log->append(packet ? *packet->title : u"none"_s);
}

Task<> load(LocalMLService &model, QList<double> *steps)
{
    const auto loaded = co_await model.loadModel([steps](double step) { steps->append(step); });
    Q_UNUSED(loaded)
}

} // namespace

class ExtractorTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsWhatArrives()
    {
        const Rows<QString, int, QByteArray, QString> rows{
            {"a page", u"http://a.org/ä"_s, 200, "<title>T</title>"_ba, u"T"_s},
            {"no content", u"http://a.org"_s, 299, ""_ba, u"-"_s},
            {"Latin-1", u"http://a.org"_s, 200, "<title>\xE4</title>"_ba, u"ä"_s},
            {"not found", u"http://a.org"_s, 404, ""_ba, u"Failed to fetch page"_s},
            {"below 200", u"http://a.org"_s, 199, ""_ba, u"Failed to fetch page"_s},
            {"no answer", u"http://a.org"_s, 0, ""_ba, u"cut off"_s},
            {"no address", u"http://a b"_s, 200, ""_ba, u"Invalid URL"_s},
        };
        for (const auto &[url, status, body, wanted] : rows) {
            FakeClock clock;
            FakeHttpClient http;
            QThreadPool pages;
            WebContentExtractor extractor(http, pages, clock);
            http.answerWith([&](const HttpRequest &) -> HttpReply {
                if (status == 0)
                    return Unexpected{HttpError{HttpError::Kind::broken, u"cut off"_s}};
                return HttpResponse{status, body, false};
            });
            const auto result = waitFor(extractor.extract(url));
            QVERIFY(result);
            const auto words = [](const auto &reason) {
                if constexpr (std::is_same_v<decltype(reason), const HttpError &>)
                    return reason.message;
                else
                    return description(reason);
            };
            const QString outcome =
                *result ? (*result)->title.value_or(u"-"_s) : std::visit(words, result->error());
            QCOMPARE(outcome, wanted);
            if (!http.requests().isEmpty()) {
                const HttpRequest request = http.requests().first();
                QCOMPARE(request.inactivityLimit, 15s);
                QCOMPARE(request.headers.size(), 1);
                QVERIFY(request.headers[0].value.endsWith("Gecko) Version/17.0 Safari/605.1.15"));
            }
            QCOMPARE(http.requests().size(), outcome == u"Invalid URL"_s ? 0 : 1);
        }
    }

    void takesOneCallAfterTheOther()
    {
        FakeClock clock;
        FakeHttpClient http;
        QThreadPool pages;
        WebContentExtractor extractor(http, pages, clock);
        QStringList log;
        Scope scope;
        auto abandoned = std::make_unique<Scope>();
        scope.start(note(extractor, u"http://a.org/1"_s, &log));
        abandoned->start(note(extractor, u"http://a.org/2"_s, &log));
        scope.start(note(extractor, u"http://a.org/3"_s, &log));
        scope.start(note(extractor, u"http://a.org/4"_s, &log));
        abandoned.reset();
        for (const QByteArray name : {"1", "3", "4"}) {
            QTRY_COMPARE(http.waiting(), 1);
            QVERIFY(http.requests().last().url.endsWith(name));
            http.answerNext(HttpResponse{200, "<title>" + name + "</title>", false});
        }
        QTRY_COMPARE(log, QStringList({u"1"_s, u"3"_s, u"4"_s}));
    }

    void loadsTheModelInTenSteps()
    {
        FakeClock clock;
        LocalMLService model(AppInfo(QString()), clock);
        const EvidencePacket packet(u"http://a.org"_s, {});
        QList<double> steps;
        {
            Scope scope;
            scope.start(load(model, &steps));
            clock.advance(250ms);
        }
        clock.advance(1s);
        QVERIFY(!model.isModelLoaded()); // the load was abandoned
        QCOMPARE(model.loadingProgress(), 0.2);
        QCOMPARE(description(model.generateSummary(packet).error()),
                 u"AI model not loaded. Please wait for initialization."_s);

        Scope scope;
        steps.clear();
        scope.start(load(model, &steps));
        QCOMPARE(model.loadingProgress(), 0.0);
        clock.advance(1s);
        QCOMPARE(steps, QList<double>({0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0}));
        QCOMPARE(*model.generateSummary(packet), u"A webpage from a.org."_s);
        QVERIFY(model.isModelLoaded() && !model.isProcessing());
        scope.start(load(model, &steps));
        QVERIFY(scope.isEmpty());
        QCOMPARE(model.loadingProgress(), 1.0);
    }

    void takesTheModelsNameFromTheInformationFile()
    {
        const QString builtIn = u"mlx-community/Qwen2.5-0.5B-Instruct-4bit"_s;
        const std::pair<QByteArray, QString> files[] = {{"MLModelName=own/model", u"own/model"_s},
                                                        {"MLModelName=", builtIn},
                                                        {"Other=x", builtIn},
                                                        {"MLModelName=$(ML_MODEL_NAME)", builtIn},
                                                        {"MLModelName=a, b", builtIn}};
        for (const auto &[text, name] : files) {
            QTemporaryFile file;
            QVERIFY(file.open());
            file.write(text);
            file.close();
            FakeClock clock;
            QCOMPARE(LocalMLService(AppInfo(file.fileName()), clock).modelName(), name);
        }
    }
};

QTEST_GUILESS_MAIN(ExtractorTest)
#include "ExtractorTest.moc"
