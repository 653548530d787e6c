// SPDX-License-Identifier: MIT
#include "Rows.h"
#include "StoreChange.h"
#include "TestStore.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

QList<LinkId> sorted(QList<LinkId> ids)
{
    std::sort(ids.begin(), ids.end());
    return ids;
}

} // namespace

class ModelContextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keepsEveryFieldOverARestart()
    {
        const Rows<QString, std::optional<QString>, std::optional<QString>> rows{
            {"as captured", u"https://a.example"_s, {}, {}},
            {"empty is not absent", u"https://a.example"_s, u""_s, u""_s},
            {"long",
             u"https://a.example/"_s + QString(60'000, u'x'),
             QString(60'000, u'\u00e9'),
             {}},
            {"a NUL inside", u"https://a.example/\0b"_s, u"a\0b"_s, u"\0"_s},
            {"beyond the BMP, combining, bidi", u"https://\u4f8b.example/\U0001f600?q='\"%00"_s,
             u"e\u0301 \u202e\ufeff\uffff\U0010ffff"_s, u"\r\n\t"_s},
        };
        for (const auto &[url, title, summary] : rows) {
            TestStore store;
            CapturedLink link = makeLink(url);
            link.copiedAt += 123456us;
            store.context().insert(link);
            if (title)
                store.context().setTitle(link.id, *title);
            if (summary)
                store.context().setSummary(link.id, *summary);
            QVERIFY(store.context().hideExported({link.id}));
            store.reopen();
            const auto found = store.context().link(link.id);
            QVERIFY(found);
            QCOMPARE(found->url, url);
            QCOMPARE(found->title, title);
            QCOMPARE(found->summary, summary);
            QCOMPARE(found->copiedAt, link.copiedAt);
            QVERIFY(found->isExported && !found->isVisible);
            QCOMPARE(*store.context().countWithUrl(url), 1);
            QCOMPARE(*store.context().countWithUrl(url.chopped(1)), 0);
            QCOMPARE(*store.context().countWithUrl(url.toUpper()), 0);
        }
    }

    void listsNewestFirstAndTiesByTheBytesOfTheId()
    {
        TestStore store;
        QList<CapturedLink> links;
        for (int i = 0; i < 60; ++i)
            links.append(store.add(QString::number(i), i / 20));
        const CapturedLink hidden = store.add(u"hidden"_s, 1);
        QVERIFY(store.context().hide({hidden.id, hidden.id}));
        std::sort(links.begin(), links.end(), [](const auto &one, const auto &other) {
            return std::pair(one.copiedAt, one.id.toRfc4122())
                > std::pair(other.copiedAt, other.id.toRfc4122());
        });
        for (const int pageSize : {1, 7, 60, 100})
            QCOMPARE(store.visible(pageSize), urlsOf(links));
        QCOMPARE(store.context().visibleSince(links.at(39).copiedAt), 40);
    }

    void readsInInsertionOrder()
    {
        TestStore store;
        QStringList urls;
        for (int i = 0; i < 10; ++i)
            urls.append(store.add(QString::number(i), -i).url);
        QVERIFY(store.context().hide({store.add(u"hidden"_s).id}));
        QCOMPARE(urlsOf(inStoreOrder(store.context())), urls);
    }

    void keepsCountsThroughEveryChange()
    {
        TestStore store;
        ModelContext &context = store.context();
        QList<LinkId> ids;
        const auto check = [&](const LinkCounts &expected) {
            QVERIFY(context.counts() == expected);
        };
        ids.append(store.add(u"before anybody asks"_s).id);
        check({1, 1, 1});
        for (int i = 1; i < 10; ++i)
            ids.append(store.add(QString::number(i), i).id);
        check({10, 10, 10});
        context.setSummary(ids.at(0), u"s"_s);
        context.setSummary(ids.at(0), u"t"_s);
        check({10, 10, 9});
        QVERIFY(context.hide({ids.at(0), ids.at(1), ids.at(1)}));
        check({10, 8, 8});
        QVERIFY(context.remove({ids.at(1), ids.at(2), ids.at(2), QUuid::createUuid()}));
        check({8, 7, 7});
        QCOMPARE(*context.removeCopiedBefore(makeLink({}, 4).copiedAt), 2);
        check({6, 6, 6});
        QCOMPARE(*context.removeCopiedBefore(makeLink({}, 4).copiedAt), 0);
        store.reopen();
        QVERIFY(store.context().counts() == (LinkCounts{6, 6, 6}));
        QVERIFY(store.context().removeAll());
        QVERIFY(store.context().counts() == LinkCounts());
        QVERIFY(store.visible().isEmpty());
    }

    void doesNothingToALinkThatIsGone()
    {
        TestStore store;
        QSignalSpy changes(&store.context(), &ModelContext::changed);
        store.context().setTitle(QUuid::createUuid(), u"t"_s);
        QVERIFY(store.context().remove({QUuid::createUuid()}));
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 0);
        QCOMPARE(store.context().counts().stored, 0);
    }

    void announcesTheNetChangeOnceALoopTurn()
    {
        TestStore store;
        ModelContext &context = store.context();
        const LinkId old = store.add(u"old"_s).id;
        const LinkId kept = store.add(u"kept"_s).id;
        QCoreApplication::processEvents();
        QSignalSpy changes(&context, &ModelContext::changed);

        const LinkId shortLived = store.add(u"short-lived"_s).id;
        QVERIFY(context.remove({shortLived}));
        const LinkId fresh = store.add(u"fresh"_s).id;
        context.setTitle(fresh, u"t"_s);
        context.setTitle(kept, u"t"_s);
        context.setSummary(kept, u"s"_s);
        QVERIFY(context.hide({old}));
        QVERIFY(context.remove({old}));
        QCOMPARE(changes.count(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 1);
        const auto change = changes.first().first().value<StoreChange>();
        QCOMPARE(change.inserted, QList{fresh});
        QCOMPARE(change.updated, QList{kept});
        QCOMPARE(change.removed, QList{old});

        QVERIFY(context.removeAll());
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 2);
        QCOMPARE(sorted(changes.last().first().value<StoreChange>().removed),
                 sorted({fresh, kept}));
    }

    void keepsExcludedDomainsInTheirOrder()
    {
        TestStore store;
        QSignalSpy changes(&store.context(), &ModelContext::excludedDomainsChanged);
        const ExcludedDomain one{QUuid::createUuid(), u"B.example"_s, store.clock.now()};
        const ExcludedDomain other{QUuid::createUuid(), u"a.example"_s, store.clock.now() - 1h};
        QVERIFY(store.context().insert(one));
        QVERIFY(store.context().insert(other));
        QCOMPARE(changes.count(), 2);
        store.reopen();
        const auto domains = store.context().excludedDomains();
        QCOMPARE(domains->size(), 2);
        QCOMPARE(domains->first().domain, one.domain);
        QCOMPARE(domains->last().addedAt, other.addedAt);
        QVERIFY(store.context().removeExcludedDomain(one.id));
        QCOMPARE(store.context().excludedDomains()->size(), 1);
    }
};

QTEST_GUILESS_MAIN(ModelContextTest)
#include "ModelContextTest.moc"
