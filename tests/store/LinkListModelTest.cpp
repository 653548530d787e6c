// SPDX-License-Identifier: MIT
#include "LinkListModel.h"

#include "Rows.h"
#include "TestStore.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

/// Random changes to a store; the same ones for the same seed.
class Chaos
{
public:
    Chaos(const TestStore &store, quint32 seed)
        : m_context(store.context())
        , m_store(store)
        , m_random(seed)
    {
    }

    void step(LinkListModel &model)
    {
        switch (m_random.bounded(9)) {
        case 0:
        case 1:
        case 2:
        case 3: // few moments, so that many links share one
            m_ids.append(m_store.add(QString::number(m_next++), m_random.bounded(200)).id);
            break;
        case 4:
            m_context.setTitle(anyId(), QString::number(m_next++));
            break;
        case 5:
            QVERIFY(m_context.hide({anyId(), anyId()}));
            break;
        case 6:
            QVERIFY(m_context.remove({anyId(), anyId()}));
            break;
        case 7: // reads as far as that
            if (const int count = model.rowCount())
                model.positionAt(m_random.bounded(count));
            break;
        case 8:
            QCoreApplication::processEvents();
        }
    }

private:
    LinkId anyId() { return m_ids.isEmpty() ? LinkId() : m_ids.at(m_random.bounded(m_ids.size())); }

    ModelContext &m_context;
    const TestStore &m_store;
    QRandomGenerator m_random;
    QList<LinkId> m_ids;
    int m_next = 0;
};

QStringList shownBy(LinkListModel &model, const ModelContext &context)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row) {
        const auto link = context.link(model.positionAt(row).id);
        texts.append(link ? link->title.value_or(link->url) : u"no link"_s);
    }
    return texts;
}

QStringList listed(const ModelContext &context, const QString &sought = {})
{
    QStringList texts;
    const auto links = context.visibleNewestFirst({}, 100'000);
    for (const CapturedLink &link : *links) {
        if (link.url.contains(sought) || link.title.value_or(u""_s).contains(sought))
            texts.append(link.title.value_or(link.url));
    }
    return texts;
}

} // namespace

class LinkListModelTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsTheStore()
    {
        Rows<quint32, int, QString> rows{};
        for (const quint32 seed : {1u, 2u}) {
            for (const int before : {0, 1200}) {
                for (const QString &sought : {u""_s, u"7"_s})
                    rows.add(
                        {u"seed %1, %2 before, '%3'"_s.arg(seed).arg(before).arg(sought).toUtf8(),
                         seed, before, sought});
            }
        }
        for (const auto &[seed, before, sought] : rows) {
            TestStore store;
            QList<CapturedLink> links;
            for (int i = 0; i < before; ++i)
                links.append(makeLink(u"before %1"_s.arg(i), i % 150));
            QVERIFY(store.context().insertAll(links));
            LinkListModel model(store.context());
            model.setSearchText(sought);
            Chaos chaos(store, seed);
            for (int i = 0; i < 120; ++i) {
                chaos.step(model);
                if (i % 30 == 0) {
                    QCoreApplication::processEvents();
                    QTRY_VERIFY(!model.isReading());
                    QCOMPARE(shownBy(model, store.context()), listed(store.context(), sought));
                }
            }
            for (int row = 0; row < model.rowCount(); ++row)
                QCOMPARE(model.rowOf(model.positionAt(row)), row);
            QVERIFY(store.context().removeAll());
            QCoreApplication::processEvents();
            QCOMPARE(model.rowCount(), 0);
        }
    }

    void leavesNoRowOfALinkThatCameAndWentUnannounced()
    {
        TestStore store;
        LinkListModel model(store.context());
        const CapturedLink link = store.add(u"short-lived"_s);
        model.positionAt(0);
        QVERIFY(store.context().remove({link.id}));
        QCoreApplication::processEvents();
        QCOMPARE(model.rowCount(), 0);
    }

    void knowsHowManyThereAreAndReadsWhereOneLooks()
    {
        TestStore store;
        QList<CapturedLink> links;
        for (int i = 0; i < 3 * LinkListModel::pageSize; ++i)
            links.append(makeLink(QString::number(i), i));
        QVERIFY(store.context().insertAll(links));
        LinkListModel model(store.context());
        QCOMPARE(model.rowCount(), links.size());
        QCOMPARE(model.positionAt(0).id, links.last().id);
        store.add(u"oldest"_s, -1);
        QCoreApplication::processEvents();
        QCOMPARE(model.rowCount(), links.size() + 1);
        QCOMPARE(model.positionAt(int(links.size()) - 1).id, links.first().id);
    }

    void finds()
    {
        const Rows<QString, QStringList> rows{
            {"address, title and summary", u"TEA"_s, {u"c/tea"_s, u"b"_s, u"a"_s}},
            {"in whatever case", u"straße"_s, {u"b"_s}},
            {"spaces are sought", u" "_s, {u"b"_s, u"a"_s}},
            {"not across two texts", u"bte"_s},
            {"not the hidden", u"hidden"_s},
        };
        for (const auto &[sought, wanted] : rows) {
            TestStore store;
            const CapturedLink a = store.add(u"a"_s, 1), b = store.add(u"b"_s, 2);
            store.add(u"c/tea"_s, 3);
            const CapturedLink hidden = store.add(u"hidden"_s, 4);
            store.context().setSummary(a.id, u"On Tea."_s);
            store.context().setTitle(b.id, u"Tea in the STRASSE"_s);
            QVERIFY(store.context().hide({hidden.id}));
            LinkListModel model(store.context());
            model.setSearchText(sought);
            QStringList found;
            for (int row = 0; row < model.rowCount(); ++row)
                found.append(store.context().link(model.positionAt(row).id)->url);
            QCOMPARE(found, wanted);
            model.setSearchText({});
            QCOMPARE(model.rowCount(), 3);
        }
    }
};

QTEST_GUILESS_MAIN(LinkListModelTest)
#include "LinkListModelTest.moc"
