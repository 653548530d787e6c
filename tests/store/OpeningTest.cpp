// SPDX-License-Identifier: MIT
#include "Rows.h"
#include "StoreDatabase.h"
#include "StoreReader.h"
#include "TestStore.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include <SQLiteCpp/Database.h>
#include <optional>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using Kind = StoreError::Kind;

namespace
{

int writesThrough = 0;

using Preparation = std::function<void(const QString &folder)>;

/// Every file in `folder` with its content.
QMap<QString, QByteArray> contentOf(const QString &folder)
{
    QMap<QString, QByteArray> content;
    for (const QFileInfo &entry :
         QDir(folder).entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries)) {
        QFile file(entry.filePath());
        content.insert(entry.fileName(),
                       file.open(QFile::ReadOnly) ? file.readAll() : QByteArray());
    }
    return content;
}

Preparation rewritten(const std::function<void(QByteArray &)> &change)
{
    return [change](const QString &folder) {
        QFile file(StoreDatabase::pathIn(folder));
        QVERIFY(file.open(QFile::ReadWrite));
        QByteArray bytes = file.readAll();
        change(bytes);
        QVERIFY(file.resize(0) && file.seek(0) && file.write(bytes) == bytes.size());
    };
}

std::unique_ptr<SQLite::Database> execute(const QString &folder, const char *sql)
{
    auto database = std::make_unique<SQLite::Database>(StoreDatabase::pathIn(folder).toStdString(),
                                                       SQLite::OPEN_READWRITE);
    database->exec(sql);
    return database;
}

Preparation executed(const char *sql)
{
    return [sql](const QString &folder) { execute(folder, sql); };
}

/// The same by a program that ends early: what it wrote is still in the log.
Preparation executedAndKilled(const char *sql)
{
    return
        [sql](const QString &folder) { runAndKill([&] { (void)execute(folder, sql).release(); }); };
}

/// What a command reads beside the program or without it.
Expected<QStringList, StoreError> urlsRead(const QString &folder,
                                           LinkOrder order = LinkOrder::newestFirst)
{
    QStringList urls;
    const auto read = forEachVisibleLink(folder, order, [&urls](const CapturedLink &link) {
        urls.append(link.url);
        return true;
    });
    return read ? Expected<QStringList, StoreError>(urls) : Unexpected{read.error()};
}

std::optional<Kind> kindAtOpening(const QString &folder)
{
    FakeClock clock;
    const auto opened = ModelContainer::open(folder, clock);
    return opened ? std::nullopt : std::optional(opened.error().kind);
}

} // namespace

/// In place of the C library's, for SQLite too.
extern "C" int fdatasync(int /*file*/)
{
    ++writesThrough;
    return 0;
}

class OpeningTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void refusesWhatIsNoStoreOfOursAndLeavesItAlone()
    {
        Rows<Preparation, Kind> rows{
            {"truncated", rewritten([](QByteArray &bytes) { bytes.chop(bytes.size() / 2); }),
             Kind::damaged},
            {"cut within the header", rewritten([](QByteArray &bytes) { bytes.truncate(50); }),
             Kind::damaged},
            {"empty", rewritten([](QByteArray &bytes) { bytes.clear(); }), Kind::damaged},
            {"random bytes", rewritten([](QByteArray &bytes) {
                 QRandomGenerator random(1);
                 for (char &byte : bytes)
                     byte = char(random.generate());
             }),
             Kind::damaged},
            {"schema overwritten",
             rewritten([](QByteArray &bytes) { bytes.replace(100, 1000, QByteArray(1000, 'x')); }),
             Kind::damaged},
            {"a table is missing", executed("DROP TABLE appSettings"), Kind::foreign},
            {"newer", executed("PRAGMA user_version=10100"), Kind::newer},
            {"newer, in the log", executedAndKilled("PRAGMA user_version=10100"), Kind::newer},
            {"of another program", executed("PRAGMA application_id=7"), Kind::foreign},
            {"of another program, in the log", executedAndKilled("PRAGMA application_id=7"),
             Kind::foreign},
            {"a folder",
             [](const QString &folder) {
                 QVERIFY(QFile::remove(StoreDatabase::pathIn(folder)));
                 QVERIFY(QDir().mkdir(StoreDatabase::pathIn(folder)));
             },
             Kind::cannotOpen},
            {"on a disk that is not mounted",
             [](const QString &folder) {
                 const QString path = StoreDatabase::pathIn(folder);
                 QVERIFY(QFile::remove(path) && QFile::link(u"/nowhere/store"_s, path));
             },
             Kind::cannotOpen},
        };
        for (const char *const planted :
             {"CREATE VIEW v AS SELECT randomblob(1000000000)",
              "CREATE TRIGGER t AFTER INSERT ON links BEGIN DELETE FROM links; END",
              "CREATE UNIQUE INDEX i ON links(url, title)",
              "DROP INDEX linksByUrl; CREATE UNIQUE INDEX linksByUrl ON links(url, id)",
              "CREATE VIRTUAL TABLE f USING fts5(x)",
              "ALTER TABLE links ADD COLUMN x AS (zeroblob(9))"})
            rows.add({planted, executed(planted), Kind::foreign});
        for (const auto &[prepare, kind] : rows) {
            TestStore store;
            for (int i = 0; i < 5; ++i)
                store.add(QString(9'000, u'x'));
            store.close();
            prepare(store.folder);
            auto before = contentOf(store.folder);
            QCOMPARE(kindAtOpening(store.folder).value(), kind);
            QCOMPARE(urlsRead(store.folder).error().kind, kind);
            auto after = contentOf(store.folder);
            before.remove(u"strandloom.sqlite-shm"_s); // holds no data
            after.remove(u"strandloom.sqlite-shm"_s);
            QCOMPARE(after, before);
        }
    }

    void tellsWhyItCannotWrite()
    {
        TestStore store;
        store.close();
        const auto kindWhenUnprivileged = [&store](const QString &folder) {
            const int kind =
                runUnprivileged([&] { return int(kindAtOpening(folder).value_or(Kind(99))); });
            return Kind(kind);
        };
        QVERIFY(chmod(qPrintable(store.temporary.path()), 0555) == 0);
        QVERIFY(chmod(qPrintable(store.folder), 0555) == 0);
        for (const QString &name : QDir(store.folder).entryList(QDir::Files))
            QVERIFY(chmod(qPrintable(store.folder + u'/' + name), 0666) == 0);
        QCOMPARE(kindWhenUnprivileged(store.folder), Kind::cannotOpen); // no log can be made
        QCOMPARE(kindWhenUnprivileged(store.temporary.filePath(u"new"_s)), Kind::cannotOpen);
        QVERIFY(chmod(qPrintable(store.temporary.path()), 0755) == 0);
        QVERIFY(chmod(qPrintable(store.folder), 0755) == 0);
        const FullDisk full;
        QCOMPARE(kindAtOpening(store.folder).value(), Kind::full);
        QCOMPARE(kindAtOpening(store.temporary.filePath(u"new"_s)).value(), Kind::full);
    }

    void keepsSecondWritersOut()
    {
        TestStore store;
        store.add(u"a"_s);
        QCOMPARE(kindAtOpening(store.folder).value(), Kind::locked);
        store.close();
        {
            SQLite::Database other(StoreDatabase::pathIn(store.folder).toStdString(),
                                   SQLite::OPEN_READWRITE);
            other.exec("BEGIN IMMEDIATE");
            QCOMPARE(kindAtOpening(store.folder).value(), Kind::locked);
        }
        QVERIFY(!kindAtOpening(store.folder));
    }

    void makesFilesForTheOwnerAlone()
    {
        const mode_t before = umask(0);
        const TestStore store;
        store.add(u"a"_s);
        umask(before);
        const auto modeOf = [](const QString &path) {
            struct stat status = {};
            return stat(qPrintable(path), &status) == 0 ? status.st_mode & 07777 : 0;
        };
        QCOMPARE(modeOf(store.folder), 0700u);
        const QStringList files = QDir(store.folder).entryList(QDir::Files);
        QCOMPARE(files.size(), 4);
        for (const QString &name : files)
            QCOMPARE(modeOf(store.folder + u'/' + name), 0600u);
    }

    void countsRowsWhateverTheyHold()
    {
        TestStore store;
        store.add(u"a"_s);
        store.add(u"b"_s);
        store.close();
        execute(store.folder, "UPDATE links SET isVisible=-9223372036854775807");
        store.open();
        QCOMPARE(store.context().counts().visible, 2);
    }

    void keepsWhatWasInsertedBeforeAKill()
    {
        TestStore store;
        store.close();
        runAndKill([&store] {
            store.open();
            store.context().setTitle(store.add(u"a"_s).id, u"title"_s);
        });
        store.open();
        const auto links = store.context().visibleNewestFirst({}, 10);
        QCOMPARE(urlsOf(*links), QStringList{u"a"_s});
        QCOMPARE(links->first().title, u"title"_s);
    }

    void waitsForTheDiskToHaveEachChange()
    {
        const TestStore store;
        store.add(u"a"_s);
        const int before = writesThrough;
        store.add(u"b"_s);
        QVERIFY(writesThrough > before);
    }

    void startsAfreshWhereOnlyALogIsLeft()
    {
        TestStore store;
        store.close();
        runAndKill([&store] {
            store.open();
            store.add(u"a"_s);
        });
        QVERIFY(QFile::remove(StoreDatabase::pathIn(store.folder)));
        store.open();
        QVERIFY(store.visible().isEmpty());
        store.add(u"b"_s);
        store.close();
        QVERIFY(checkIntegrity(store.folder));
    }

    void readsBesideTheProgramAndWithoutIt()
    {
        const Preparation killed = executedAndKilled("UPDATE links SET url='killed'");
        const Rows<Preparation> rows{
            {"ended", Preparation([](auto) {})},
            {"killed", killed},
            {"killed, and the log's index is gone", Preparation([=](const QString &folder) {
                 killed(folder);
                 QVERIFY(QFile::remove(StoreDatabase::pathIn(folder) + u"-shm"));
             })},
        };
        for (const auto &[prepare] : rows) {
            TestStore store;
            QVERIFY(urlsRead(store.temporary.filePath(u"none"_s))->isEmpty());
            QVERIFY(!QFile::exists(store.temporary.filePath(u"none"_s)));
            store.add(u"ended"_s);
            QCOMPARE(*urlsRead(store.folder), QStringList{u"ended"_s});
            QVERIFY(checkIntegrity(store.folder));
            store.close();
            prepare(store.folder);
            const auto before = contentOf(store.folder);
            const auto urls = urlsRead(store.folder);
            QVERIFY(checkIntegrity(store.folder));
            QCOMPARE(contentOf(store.folder).keys(), before.keys());
            store.open();
            QCOMPARE(*urls, store.visible());
        }
    }

    void findsDamageThatOpeningDoesNotSee()
    {
        TestStore store;
        for (int i = 0; i < 200; ++i)
            store.add(QString(900, u'x'), i);
        store.close();
        rewritten([](QByteArray &bytes) {
            bytes.replace(bytes.size() / 2, 4096, QByteArray(4096, '\xff'));
        })(store.folder);
        QCOMPARE(checkIntegrity(store.folder).error().kind, Kind::damaged);
    }
};

QTEST_GUILESS_MAIN(OpeningTest)
#include "OpeningTest.moc"
