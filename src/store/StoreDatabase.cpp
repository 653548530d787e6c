// SPDX-License-Identifier: MIT
#include "StoreDatabase.h"

#include "FilePresence.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Kind = StoreError::Kind;

namespace
{

constexpr int schemaVersion = 10000; // 1.0.0
constexpr int applicationId = 0x53744c6d; // "StLm"
constexpr int longestText = 16 << 20; // bytes; captures and imports take a sixteenth at most
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

/// Everything that can be in a schema; statistics, which only guide SQLite, may be added.
constexpr auto wholeSchema = "SELECT type, name, tbl_name, coalesce(sql, '') FROM sqlite_master "
                             "WHERE name NOT GLOB 'sqlite_stat[14]' ORDER BY name";

std::optional<StoreError> systemFailure(const QString &path)
{
    const Kind kind = errno == ENOSPC || errno == EDQUOT ? Kind::full : Kind::cannotOpen;
    return StoreError{kind, path + u": " + qt_error_string()};
}

/// Throws what SQLiteCpp throws.
std::vector<std::string> schemaOf(SQLite::Database &database)
{
    std::vector<std::string> texts;
    SQLite::Statement query(database, wholeSchema);
    while (query.executeStep()) {
        for (int column = 0; column < query.getColumnCount(); ++column)
            texts.push_back(query.getColumn(column).getString());
    }
    return texts;
}

std::vector<std::string> schemaMadeAnew()
{
    SQLite::Database database(":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec(schema);
    return schemaOf(database);
}

/// Makes an empty file for the owner alone; SQLite gives those beside it the same permissions.
bool makePrivateFile(const QByteArray &name)
{
    unlink(name.constData());
    const int made = open(name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    return made >= 0 && close(made) == 0;
}

/// Nobody sees the file before it is whole, so what a crash leaves of it does not matter.
std::optional<StoreError> writeSchema(const QByteArray &name)
{
    try {
        SQLite::Database database(name.toStdString(), SQLite::OPEN_READWRITE);
        database.exec("PRAGMA synchronous=OFF");
        database.exec("PRAGMA journal_mode=MEMORY");
        SQLite::Transaction transaction(database);
        database.exec(schema);
        database.exec("PRAGMA application_id=" + std::to_string(applicationId));
        database.exec("PRAGMA user_version=" + std::to_string(schemaVersion));
        transaction.commit();
        database.exec("PRAGMA journal_mode=WAL"); // or the first opening would write that
    } catch (const SQLite::Exception &exception) {
        return storeError(exception);
    }
    return std::nullopt;
}

bool sync(const QByteArray &name)
{
    const int file = open(name.constData(), O_RDONLY | O_CLOEXEC);
    const bool isSafe = file >= 0 && fdatasync(file) == 0;
    return file >= 0 && close(file) == 0 && isSafe;
}

/// Which file has that name; absent when none has.
std::optional<std::pair<dev_t, ino_t>> fileAt(const QByteArray &name)
{
    struct stat status = {};
    if (stat(name.constData(), &status) != 0)
        return std::nullopt;
    return std::pair(status.st_dev, status.st_ino);
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
    if (!sync(draft))
        return systemFailure(path);
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
    : m_name(QFile::encodeName(path))
    , m_connection(
          "file:" + QFile::encodeName(path).toPercentEncoding("/").toStdString()
              + (access == Access::immutable      ? "?immutable=1"
                     : access == Access::unshared ? "?vfs=unix-none"
                                                  : ""),
          SQLite::OPEN_URI | SQLite::OPEN_NOMUTEX // of one thread, as all that is made of it
              | (access == Access::readWrite ? SQLite::OPEN_READWRITE : SQLite::OPEN_READONLY),
          busyMilliseconds)
{
    setOption(SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, true); // whatever is not sound stays as it is
    setOption(SQLITE_DBCONFIG_DEFENSIVE, true);
    setOption(SQLITE_DBCONFIG_TRUSTED_SCHEMA, false);
    sqlite3_limit(m_connection.getHandle(), SQLITE_LIMIT_LENGTH, longestText);
    if (access == Access::unshared)
        m_connection.exec("PRAGMA locking_mode=EXCLUSIVE"); // keeps the log's index in memory
}

void StoreDatabase::setOption(int option, bool isOn)
{
    sqlite3_db_config(m_connection.getHandle(), option, int(isOn), nullptr);
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
    const auto hasLog = isStoreFileThere(logOf(path));
    auto store = connect(path, Access::readWrite);
    if (!store)
        return store;
    if (const auto ready = (*store)->attempt([&] { (*store)->prepareForWriting(); }); !ready)
        return Unexpected{ready.error()};
    (*store)->m_wasLeftOpen = !hasLog || *hasLog;
    if (!(*store)->m_wasLeftOpen)
        (*store)->foldLogAtEnd(); // nothing that was there before is in it
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
        std::unique_ptr<StoreDatabase> store(new StoreDatabase(path, access));
        store->m_file = fileAt(store->m_name);
        return store;
    } catch (const SQLite::Exception &exception) {
        return Unexpected{storeError(exception)};
    }
}

std::optional<StoreError> StoreDatabase::displaced() const
{
    if (fileAt(m_name) == m_file)
        return std::nullopt;
    return StoreError{Kind::gone, QFile::decodeName(m_name)};
}

/// Opening succeeds on anything; the first statements tell what it is.
std::optional<StoreError> StoreDatabase::mismatch()
{
    if (m_connection.execAndGet("PRAGMA application_id").getInt() != applicationId)
        return StoreError{Kind::foreign, {}};
    const int version = m_connection.execAndGet("PRAGMA user_version").getInt();
    if (version > schemaVersion)
        return StoreError{Kind::newer, u"schema version %1"_s.arg(version)};
    static const std::vector<std::string> ourSchema = schemaMadeAnew();
    // A view, a trigger or an index that somebody added would be used by our statements.
    if (version < schemaVersion || schemaOf(m_connection) != ourSchema)
        return StoreError{Kind::foreign, u"unknown schema"_s};
    return std::nullopt;
}

void StoreDatabase::prepareForWriting()
{
    m_connection.exec("PRAGMA journal_mode=WAL");
    m_connection.exec("PRAGMA synchronous=FULL");
    m_connection.exec("PRAGMA secure_delete=ON"); // what is deleted is overwritten
    m_connection.exec("PRAGMA temp_store=MEMORY");
    m_connection.exec("PRAGMA cache_size=-16384"); // the pages that many new links go to
    m_connection.exec("PRAGMA journal_size_limit=4194304"); // after a bulk change
    SQLite::Transaction tellsWhetherItCanBeWritten(m_connection,
                                                   SQLite::TransactionBehavior::IMMEDIATE);
}

void StoreDatabase::foldLogAtEnd()
{
    setOption(SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, false);
}

Expected<void, StoreError> StoreDatabase::emptyLog()
{
    return attempt([this] { m_connection.exec("PRAGMA wal_checkpoint(TRUNCATE)"); });
}

void StoreDatabase::execute(const char *statements)
{
    m_connection.exec(statements);
}

Query StoreDatabase::query(std::string_view sql)
{
    const auto known = m_statements.find(sql.data());
    if (known != m_statements.end())
        return Query(known->second);
    return Query(
        m_statements.try_emplace(sql.data(), m_connection, std::string(sql)).first->second);
}
