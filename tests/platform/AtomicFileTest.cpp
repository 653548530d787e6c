// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include "Rows.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

/// The words of the error; empty when the file was written.
QString write(const QString &path, const QByteArray &content)
{
    auto file = AtomicFile::open(path);
    if (!file)
        return description(file.error());
    file->write(content);
    const auto saved = file->commit();
    return saved ? QString() : description(saved.error());
}

} // namespace

class AtomicFileTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_folder.emplace();
        m_path = m_folder->filePath(u"links.md"_s);
    }

    void isInItsPlaceOnlyWhenCommitted()
    {
        auto file = AtomicFile::open(m_path);
        QVERIFY(file && file->write("new"));
        QVERIFY(!QFile::exists(m_path));
        QVERIFY(bool(file->commit()));
        QCOMPARE(contentOf(m_path), "new");
    }

    /// With and without a name, dropped and killed.
    void leavesNothingBehind()
    {
        QCOMPARE(write(m_path, "old"), QString());
        {
            auto file = AtomicFile::open(m_path);
            QVERIFY(file && file->write("new"));
            const int nameless = ::open(QFile::encodeName(m_folder->path()).constData(),
                                        O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
            QCOMPARE(names().size(), nameless < 0 ? 2 : 1); // not all file systems know such
            ::close(nameless);
            QVERIFY(bool(file->draft()));
            QCOMPARE(write(m_path, "newer"), QString()); // takes the other's draft for no leftover
            QCOMPARE(names().size(), 2);
        }
        QCOMPARE(names(), QStringList{u"links.md"_s});

        const pid_t child = fork();
        if (child == 0) {
            auto file = AtomicFile::open(m_path);
            _exit(file && file->draft() ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
        QCOMPARE(names().size(), 2);
        QCOMPARE(write(m_folder->filePath(u"other.md"_s), "x"), QString());
        QCOMPARE(names(), (QStringList{u"links.md"_s, u"other.md"_s}));
        QCOMPARE(contentOf(m_path), "newer");
    }

    void followsNoLinkThatAnotherUserLaidOut()
    {
        if (geteuid() != 0)
            QSKIP("only root can make another user's link");
        QCOMPARE(write(m_path, "old"), QString());
        const QString first = m_folder->filePath(u"first"_s);
        const QString second = m_folder->filePath(u"second"_s);
        QVERIFY(QFile::link(m_path, second) && QFile::link(u"second"_s, first));
        QCOMPARE(lchown(QFile::encodeName(second).constData(), 65534, 65534), 0);
        QCOMPARE(write(first, "new"), QString()); // nobody else may write to the folder
        QCOMPARE(chmod(QFile::encodeName(m_folder->path()).constData(), 01777), 0);
        QCOMPARE(write(first, "newer"), description(FileError{second, FileError::foreignLink}));
        QCOMPARE(contentOf(m_path), "new");
    }

    void keepsPermissionsAndLinks()
    {
        QCOMPARE(write(m_path, "old"), QString());
        QCOMPARE(chmod(QFile::encodeName(m_path).constData(), 0640), 0);
        const QString link = m_folder->filePath(u"link"_s);
        QVERIFY(QFile::link(m_path, link));
        QCOMPARE(write(link, "new"), QString());
        QCOMPARE(QFileInfo(link).symLinkTarget(), m_path);
        QCOMPARE(contentOf(m_path), "new");
        struct stat found = {};
        QCOMPARE(stat(QFile::encodeName(m_path).constData(), &found), 0);
        QCOMPARE(int(found.st_mode & 0777), 0640);
    }

    void keepsTheOldFileWhenTheDiskIsFull()
    {
        QCOMPARE(write(m_path, "old"), QString());
        rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{4096, before.rlim_max};
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
        const QString error = write(m_path, QByteArray(10'000, 'x'));
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);

        QCOMPARE(error, m_path + u": " + qt_error_string(EFBIG));
        QCOMPARE(contentOf(m_path), "old");
        QCOMPARE(names(), QStringList{u"links.md"_s});
    }

    void refusesWhatItCannotReplace()
    {
        const Rows<QString, int> rows{
            {"a vanished folder", u"/nowhere/links.md"_s, ENOENT},
            {"a folder", QDir::tempPath(), EISDIR},
            {"a device", u"/dev/null"_s, int(FileError::notRegular)},
        };
        for (const auto &[path, code] : rows)
            QCOMPARE(write(path, "new"), description(FileError{path, code}));
    }

    void refusesReadOnlyFoldersAndFiles()
    {
        QCOMPARE(write(m_path, "old"), QString());
        const QByteArray folder = QFile::encodeName(m_folder->path());
        chmod(folder.constData(), 0555);
        const bool isRoot = geteuid() == 0; // who may do anything
        if (isRoot)
            QCOMPARE(seteuid(65534), 0);
        const auto restore = qScopeGuard([&] {
            if (isRoot)
                (void)seteuid(0);
            chmod(folder.constData(), 0755);
        });
        const QString other = m_folder->filePath(u"other.md"_s);
        QCOMPARE(write(other, "new"), other + u": " + qt_error_string(EACCES));
    }

private:
    QStringList names() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
    }

    std::optional<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(AtomicFileTest)
#include "AtomicFileTest.moc"
