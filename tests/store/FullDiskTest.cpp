// SPDX-License-Identifier: MIT
#include "LinkListModel.h"
#include "StoreDatabase.h"
#include "TestStore.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// The disk fills up while the program runs.
class FullDiskTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keepsNewLinksAndChangesInMemoryUntilThereIsSpace()
    {
        TestStore store;
        ModelContext &context = store.context();
        const LinkId old = store.add(u"old"_s, 1).id;
        QSignalSpy unsaved(&context, &ModelContext::hasUnsavedChangesChanged);
        std::optional<FullDisk> full(std::in_place);
        const LinkId fresh = store.add(u"fresh"_s, 3).id;
        store.add(u"late, yet older"_s, 2);
        context.setTitle(old, u"title"_s);
        context.setSummary(fresh, u"summary"_s);

        const auto check = [&store, old, fresh] {
            const ModelContext &shown = store.context();
            const QStringList urls{u"fresh"_s, u"late, yet older"_s, u"old"_s};
            QCOMPARE(store.visible(1), urls);
            QCOMPARE(store.visible(), urls);
            QCOMPARE(urlsOf(inStoreOrder(shown)),
                     (QStringList{u"old"_s, u"fresh"_s, u"late, yet older"_s}));
            QCOMPARE(shown.link(old)->title, u"title"_s);
            QCOMPARE(shown.link(fresh)->summary, u"summary"_s);
            QCOMPARE(*shown.countWithUrl(u"fresh"_s), 1);
            QCOMPARE(shown.visibleSince(makeLink({}, 2).copiedAt), 2);
            QCOMPARE(shown.counts().stored, 3);
            QCOMPARE(shown.counts().visible, 3);
            QCOMPARE(shown.counts().visibleWithoutSummary, 2);
        };
        check();
        QVERIFY(context.hasUnsavedChanges());
        QCOMPARE(unsaved.count(), 1);
        store.clock.advance(1min);
        QVERIFY(context.hasUnsavedChanges());
        full.reset();
        store.clock.advance(5s);
        QVERIFY(!context.hasUnsavedChanges());
        QCOMPARE(unsaved.count(), 2);
        QCOMPARE(store.clock.alarmCount(), 0u); // no wake-ups while all is well
        check();
        store.reopen();
        check();
    }

    void showsWhatIsHiddenInMemoryAsHidden()
    {
        TestStore store;
        QList<LinkId> ids;
        for (int i = 0; i < LinkListModel::pageSize + 20; ++i)
            ids.append(store.add(QString::number(i), i).id);
        LinkListModel model(store.context());
        model.positionAt(0);
        const QList<LinkId> hidden = ids.mid(10);
        std::optional<FullDisk> full(std::in_place);
        QVERIFY(store.context().hideExported(hidden));
        QCoreApplication::processEvents();
        const auto check = [&] {
            QCOMPARE(store.visible(3).size(), 10);
            QCOMPARE(inStoreOrder(store.context()).size(), 10);
            QCOMPARE(store.context().counts().visible, 10);
            QCOMPARE(store.context().visibleSince(makeLink({}, 5).copiedAt), 5);
            QVERIFY(store.context().link(ids.last())->isExported);
        };
        check();
        QCOMPARE(model.rowCount(), 10);
        QCOMPARE(model.positionAt(9).id, ids.first());
        full.reset();
        store.clock.advance(5s);
        store.reopen();
        check();
    }

    void failsToRemoveAndLeavesTheListAsItWas()
    {
        const TestStore store;
        const LinkId id = store.add(u"a"_s).id;
        const FullDisk full;
        store.add(u"b"_s, 1);
        const auto refused = [](const auto &result) {
            return !result && result.error().kind == StoreError::Kind::full;
        };
        QVERIFY(refused(store.context().remove({id})));
        QVERIFY(refused(store.context().removeAll()));
        QVERIFY(refused(store.context().removeCopiedBefore(makeLink({}, 5).copiedAt)));
        QVERIFY(refused(store.context().insert(ExcludedDomain{QUuid::createUuid(), u"a"_s, {}})));
        QVERIFY(store.context().excludedDomains()->isEmpty());
        QCOMPARE(store.visible(), (QStringList{u"b"_s, u"a"_s}));
        QCOMPARE(store.context().counts().visible, 2);
    }

    void removesWhatWasNeverWritten()
    {
        TestStore store;
        std::optional<FullDisk> full(std::in_place);
        const LinkId id = store.add(u"a"_s).id;
        QVERIFY(store.context().remove({id}));
        QVERIFY(!store.context().hasUnsavedChanges());
        store.add(u"b"_s);
        QCOMPARE(*store.context().removeCopiedBefore(makeLink({}, 1).copiedAt), 1);
        QCOMPARE(store.context().counts().stored, 0);
        full.reset();
        store.reopen();
        QVERIFY(store.visible().isEmpty());
    }

    void savesAtTheEndWhatCouldNotBeSavedBefore()
    {
        TestStore store;
        {
            const FullDisk full;
            store.add(u"a"_s);
        }
        store.reopen();
        QCOMPARE(store.visible(), QStringList{u"a"_s});
    }

    void loseOneRowAndNotItsNeighbours()
    {
        TestStore store;
        const LinkId taken = store.add(u"taken"_s).id;
        {
            const FullDisk full;
            for (int i = 0; i < 6; ++i)
                store.add(QString::number(i), i);
            CapturedLink twin = makeLink(u"twin"_s);
            twin.id = taken; // the store refuses it for good
            store.context().insert(twin);
            QVERIFY(store.context().hide({store.add(u"hidden"_s).id})); // which has no row yet
        }
        store.clock.advance(5s);
        QCOMPARE(store.context().unsavedReason()->kind, StoreError::Kind::failed);
        QCOMPARE(urlsOf(*store.context().unsavedLinks()), QStringList{u"twin"_s});
        store.reopen();
        QCOMPARE(store.visible().size(), 7);
        QCOMPARE(store.context().counts().stored, 8);
    }

    void writesNothingIntoAStoreThatIsNoLongerThere()
    {
        TestStore store;
        store.add(u"old"_s);
        const QString path = StoreDatabase::pathIn(store.folder);
        QVERIFY(QFile::rename(path, path + u".moved"));
        store.add(u"new"_s, 1);
        QCOMPARE(store.context().unsavedReason()->kind, StoreError::Kind::gone);
        QCOMPARE(store.visible(), (QStringList{u"new"_s, u"old"_s}));
        QVERIFY(!store.context().removeAll());
        QVERIFY(QFile::rename(path + u".moved", path));
        store.clock.advance(5s);
        QVERIFY(!store.context().hasUnsavedChanges());
    }

    void leavesNothingOfWhatIsDeleted()
    {
        TestStore store;
        const auto bytes = [&store] {
            QByteArray all;
            for (const QFileInfo &entry : QDir(store.folder).entryInfoList(QDir::Files)) {
                QFile file(entry.filePath());
                all += file.open(QFile::ReadOnly) ? file.readAll() : "unreadable";
            }
            return all;
        };
        const LinkId one = store.add(u"https://secret.example/1"_s).id;
        store.add(u"https://secret.example/2"_s);
        QVERIFY(bytes().contains("secret.example/1"));
        QVERIFY(store.context().remove({one}));
        store.clock.advance(1s);
        QVERIFY(!bytes().contains("secret.example/1"));
        QVERIFY(store.context().removeAll());
        QVERIFY(!bytes().contains("secret.example"));
    }
};

QTEST_GUILESS_MAIN(FullDiskTest)
#include "FullDiskTest.moc"
