// SPDX-License-Identifier: MIT
#include "LinkListModel.h"

#include "TestStore.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

/// What a model shows, kept from its signals alone.
class Follower
{
public:
    explicit Follower(const LinkListModel &model)
        : m_model(model)
    {
        QObject::connect(&model, &LinkListModel::rowsInserted, [this](auto, int first, int last) {
            for (int row = first; row <= last; ++row)
                rows.insert(row, textAt(row));
        });
        QObject::connect(&model, &LinkListModel::rowsRemoved, [this](auto, int first, int last) {
            rows.remove(first, last - first + 1);
        });
        QObject::connect(&model, &LinkListModel::dataChanged,
                         [this](const QModelIndex &first, const QModelIndex &last) {
                             for (int row = first.row(); row <= last.row(); ++row)
                                 rows[row] = textAt(row);
                         });
    }

    QStringList rows;

private:
    QString textAt(int row) const { return m_model.index(row).data().toString(); }

    const LinkListModel &m_model;
};

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
        case 7:
            if (model.canFetchMore({}))
                model.fetchMore({});
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

void fetchAll(LinkListModel &model)
{
    while (model.canFetchMore({}))
        model.fetchMore({});
}

QStringList shownBy(const ModelContext &context)
{
    QStringList texts;
    const auto links = context.visibleNewestFirst({}, 100'000);
    for (const CapturedLink &link : *links)
        texts.append(link.title.value_or(link.url));
    return texts;
}

} // namespace

class LinkListModelTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsTheStore_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<int>("before");
        for (const quint32 seed : {1u, 2u}) {
            for (const int before : {0, LinkListModel::pageSize + 50})
                QTest::addRow("seed %u, %d links before", seed, before) << seed << before;
        }
    }

    void followsTheStore()
    {
        QFETCH(quint32, seed);
        QFETCH(int, before);
        TestStore store;
        for (int i = 0; i < before; ++i)
            store.add(u"before %1"_s.arg(i), i % 150);
        LinkListModel model(store.context());
        const Follower follower(model);
        const QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy resets(&model, &LinkListModel::modelReset);
        QHash<LinkId, QPersistentModelIndex> indexes;
        Chaos chaos(store, seed);
        for (int i = 0; i < 300; ++i) {
            chaos.step(model);
            if (i % 25 == 0 && model.rowCount() > 0) {
                const int row = model.rowCount() / 2;
                indexes.insert(model.linkAt(row).id, model.index(row));
            }
        }
        fetchAll(model);
        QCoreApplication::processEvents();
        QCOMPARE(follower.rows, shownBy(store.context()));
        QCOMPARE(model.rowCount(), store.context().counts().visible);
        QCOMPARE(resets.count(), 0);
        QVERIFY(!indexes.isEmpty());
        for (auto it = indexes.begin(); it != indexes.end(); ++it)
            QCOMPARE(it.value().row(), model.rowOf(it.key()));
    }

    void loadsNoMoreThanIsAskedFor()
    {
        TestStore store;
        for (int i = 0; i < LinkListModel::pageSize + 10; ++i)
            store.add(QString::number(i), i);
        QCoreApplication::processEvents();
        LinkListModel model(store.context());
        QCOMPARE(model.rowCount(), 0);
        model.fetchMore({});
        QCOMPARE(model.rowCount(), LinkListModel::pageSize);
        store.add(u"newest"_s, 1000);
        store.add(u"oldest"_s, -1);
        QCoreApplication::processEvents();
        QCOMPARE(model.rowCount(), LinkListModel::pageSize + 1);
        QCOMPARE(model.linkAt(0).url, u"newest"_s);
        fetchAll(model);
        QCOMPARE(model.linkAt(model.rowCount() - 1).url, u"oldest"_s);
    }

    void leavesNoRowOfALinkThatCameAndWentUnannounced()
    {
        TestStore store;
        LinkListModel model(store.context());
        const CapturedLink link = store.add(u"short-lived"_s);
        fetchAll(model);
        QVERIFY(store.context().remove({link.id}));
        QCoreApplication::processEvents();
        QCOMPARE(model.rowCount(), 0);
    }

    void showsTheBeginningOfALongText()
    {
        TestStore store;
        const CapturedLink link = store.add(QString(60'000, u'x'));
        LinkListModel model(store.context());
        fetchAll(model);
        QCOMPARE(model.index(0).data().toString(), QString(500, u'x'));
        store.context().setTitle(link.id, QString(499, u'x') + u"\U0001f600"_s);
        QCoreApplication::processEvents();
        QCOMPARE(model.index(0).data().toString(), QString(499, u'x'));
        QCOMPARE(model.linkAt(0).url, link.url);
    }
};

QTEST_GUILESS_MAIN(LinkListModelTest)
#include "LinkListModelTest.moc"
