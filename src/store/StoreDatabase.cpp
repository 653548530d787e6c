// SPDX-License-Identifier: MIT
#include "StoreDatabase.h"

#include "FilePresence.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Kind = StoreError::Kind;

namespace
{

constexpr int schemaVersion = 10000; // 1.0.0
constexpr int applicationId = 0x53744c6d; // "StLm"
constexpr int busyMilliseconds = 40; // the main thread waits no longer for another program

constexpr auto schema = R"(
CREATE TABLE links(
    seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, url TEXT NOT NULL, title TEXT, summary TEXT,
    copiedAt INTEGER NOT NULL, isExported INTEGER NOT NULL, isVisible INTEGER NOT NULL);
CREATE INDEX linksByUrl ON links(url);
CREATE INDEX linksByCopiedAt ON links(copiedAt);
CREATE INDEX visibleLinks ON links(copiedAt DESC, id DESC) WHERE isVisible;
CREATE INDEX linksToSummarize ON links(copiedAt DESC, id DESC) WHERE isVisible AND summary IS NULL;
CREATE TABLE excludedDomains(
    seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, domain TEXT NOT NULL,
    addedAt INTEGER NOT NULL);
CREATE TABLE appSettings(
    id BLOB NOT NULL UNIQUE, showInDock INTEGER NOT NULL, launchAtLogin INTEGER NOT NULL,
    checkForUpdates INTEGER NOT NULL, emailDigestEnabled INTEGER NOT NULL, emailAddress TEXT,
    emailSendTime INTEGER, autoPruneDays INTEGER NOT NULL);
)";

/// Names every column, and reads no row.
constexpr auto probe = R"(
SELECT seq, id, url, title, summary, copiedAt, isExported, isVisible FROM links LIMIT 0;
SELECT seq, id, domain, addedAt FROM excludedDomains LIMIT 0;
SELECT id, showInDock, launchAtLogin, checkForUpdates, emailDigestEnabled, emailAddress,
    emailSendTime, autoPruneDays FROM appSettings LIMIT 0;
)";

std::optional<StoreError> systemFailure(const QString &path)
{
    const Kind kind = errno == ENOSPC || errno == EDQUOT ? Kind::full : Kind::cannotOpen;
    return StoreError{kind, path + u": " + qt_error_string()};
}

/// Makes an empty file for the owner alone; SQLite gives those beside it the same permissions.
bool makePrivateFile(const QByteArray &name)
{
    unlink(name.constData());
    const int made = open(name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    return made >= 0 && close(made) == 0;
}

std::optional<StoreError> writeSchema(const QByteArray &name)
{
    try {
        SQLite::Database database(name.toStdString(), SQLite::OPEN_READWRITE);
        SQLite::Transaction transaction(database);
        database.exec(schema);
        database.exec("PRAGMA application_id=" + std::to_string(applicationId));
        database.exec("PRAGMA user_version=" + std::to_string(schemaVersion));
        transaction.commit();
    } catch (const SQLite::Exception &exception) {
        return storeError(exception);
    }
    return std::nullopt;
}

bool remove(const QString &path)
{
    return unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT;
}

/// Replaces nothing, whatever has come to be there.
bool putInPlace(const QByteArray &draft, const QByteArray &name)
{
    if (renameat2(AT_FDCWD, draft.constData(), AT_FDCWD, name.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    return link(draft.constData(), name.constData()) == 0 && unlink(draft.constData()) == 0;
}

/// Builds the store under another name first, so that there is a whole one or none.
std::optional<StoreError> create(const QString &path)
{
    const QByteArray draft = QFile::encodeName(path + u".new");
    if (!makePrivateFile(draft))
        return systemFailure(path);
    if (const auto error = writeSchema(draft)) {
        unlink(draft.constData());
        return error;
    }
    // The log of a store that is gone must not be played back into this one.
    if (!remove(StoreDatabase::logOf(path)) || !remove(StoreDatabase::indexOf(path))
        || !putInPlace(draft, QFile::encodeName(path)))
        return systemFailure(path);
    return std::nullopt;
}

std::optional<StoreError> unusableFile(const QFileInfo &file)
{
    if (!file.isFile())
        return StoreError{Kind::cannotOpen, file.filePath() + u" is not a file"};
    if (file.size() < 512) // less than a page; SQLite would take an empty file for a new database
        return StoreError{Kind::damaged, file.filePath() + u" is too short"};
    return std::nullopt;
}

} // namespace

StoreDatabase::StoreDatabase(const QString &path, Access access)
    : m_connection(
        "file:" + QFile::encodeName(path).toPercentEncoding("/").toStdString()
            + (access == Access::immutable      ? "?immutable=1"
                   : access == Access::unshared ? "?vfs=unix-none"
                                                : ""),
        SQLite::OPEN_URI
            | (access == Access::readWrite ? SQLite::OPEN_READWRITE : SQLite::OPEN_READONLY),
        busyMilliseconds)
{
    if (access == Access::unshared) {
        sqlite3_db_config(m_connection.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        m_connection.exec("PRAGMA locking_mode=EXCLUSIVE"); // keeps the log's index in memory
    }
}

QString StoreDatabase::pathIn(const QString &folder)
{
    return folder + u"/strandloom.sqlite";
}

QString StoreDatabase::logOf(const QString &path)
{
    return path + u"-wal";
}

QString StoreDatabase::indexOf(const QString &path)
{
    return path + u"-shm";
}

Expected<bool, StoreError> isStoreFileThere(const QString &path)
{
    const auto there = isThere(path);
    if (!there)
        return Unexpected{StoreError{Kind::cannotOpen, description(there.error())}};
    return *there;
}

StoreDatabase::Opened StoreDatabase::open(const QString &folder)
{
    const QString path = pathIn(folder);
    const auto isStored = isStoreFileThere(path);
    if (!isStored)
        return Unexpected{isStored.error()};
    if (!*isStored) {
        if (const auto error = create(path))
            return Unexpected{*error};
    }
    if (const auto verified = openReadOnly(folder); !verified)
        return Unexpected{verified.error()};
    auto store = connect(path, Access::readWrite);
    if (!store)
        return store;
    if (const auto ready = (*store)->attempt([&] { (*store)->prepareForWriting(); }); !ready)
        return Unexpected{ready.error()};
    return store;
}

StoreDatabase::Opened StoreDatabase::openReadOnly(const QString &folder)
{
    return openFileReadOnly(pathIn(folder));
}

StoreDatabase::Opened StoreDatabase::openFileReadOnly(const QString &path)
{
    if (const auto error = unusableFile(QFileInfo(path)))
        return Unexpected{*error};
    const auto hasLog = isStoreFileThere(logOf(path));
    const auto hasIndex = isStoreFileThere(indexOf(path));
    if (!hasLog || !hasIndex)
        return Unexpected{hasLog ? hasIndex.error() : hasLog.error()};
    // Without a log nobody writes, and only as "immutable" does SQLite make no files beside it. A
    // log without its index was left by a program that ended early, or copied here without it.
    const Access access = !*hasLog ? Access::immutable
        : !*hasIndex               ? Access::unshared
                                   : Access::readOnly;
    auto store = connect(path, access);
    if (!store)
        return store;
    const auto mismatch = (*store)->attempt([&] { return (*store)->mismatch(); });
    if (!mismatch)
        return Unexpected{mismatch.error()};
    if (*mismatch)
        return Unexpected{**mismatch};
    return store;
}

StoreDatabase::Opened StoreDatabase::connect(const QString &path, Access access)
{
    try {
        return std::unique_ptr<StoreDatabase>(new StoreDatabase(path, access));
    } catch (const SQLite::Exception &exception) {
        return Unexpected{storeError(exception)};
    }
}

/// Opening succeeds on anything; the first statements tell what it is.
std::optional<StoreError> StoreDatabase::mismatch()
{
    if (m_connection.execAndGet("PRAGMA application_id").getInt() != applicationId)
        return StoreError{Kind::foreign, {}};
    const int version = m_connection.execAndGet("PRAGMA user_version").getInt();
    if (version > schemaVersion)
        return StoreError{Kind::newer, u"schema version %1"_s.arg(version)};
    const int result = m_connection.tryExec(probe);
    if (version < schemaVersion || result == SQLITE_ERROR)
        return StoreError{Kind::damaged, u"unknown schema"_s};
    if (result != SQLITE_OK)
        throw SQLite::Exception(m_connection.getHandle(), result);
    return std::nullopt;
}

void StoreDatabase::prepareForWriting()
{
    m_connection.exec("PRAGMA journal_mode=WAL");
    m_connection.exec("PRAGMA synchronous=FULL");
    m_connection.exec("PRAGMA journal_size_limit=4194304"); // after a bulk change
    SQLite::Transaction tellsWhetherItCanBeWritten(m_connection,
                                                   SQLite::TransactionBehavior::IMMEDIATE);
}

Query StoreDatabase::query(std::string_view sql)
{
    const auto known = m_statements.find(sql.data());
    if (known != m_statements.end())
        return Query(known->second);
    return Query(
        m_statements.try_emplace(sql.data(), m_connection, std::string(sql)).first->second);
}
