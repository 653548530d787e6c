#include "StoreDatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <SQLiteCpp/Transaction.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Kind = StoreError::Kind;

namespace
{

constexpr int schemaVersion = 10000; // 1.0.0
constexpr int applicationId = 0x53744c6d; // "StLm"
constexpr int busyMilliseconds = 40; // less than the main thread may be held

constexpr auto schema = R"(
CREATE TABLE links(
    seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, url TEXT NOT NULL, title TEXT, summary TEXT,
    copiedAt INTEGER NOT NULL, isExported INTEGER NOT NULL, isVisible INTEGER NOT NULL);
CREATE INDEX linksByUrl ON links(url);
CREATE INDEX linksByCopiedAt ON links(copiedAt);
CREATE INDEX visibleLinks ON links(copiedAt DESC, id DESC) WHERE isVisible;
CREATE TABLE excludedDomains(
    seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, domain TEXT NOT NULL,
    addedAt INTEGER NOT NULL);
CREATE TABLE appSettings(
    id BLOB NOT NULL UNIQUE, showInDock INTEGER NOT NULL, launchAtLogin INTEGER NOT NULL,
    checkForUpdates INTEGER NOT NULL, emailDigestEnabled INTEGER NOT NULL, emailAddress TEXT,
    emailSendTime INTEGER, autoPruneDays INTEGER NOT NULL);
)";

/// Reads every column that the program knows, without reading a row.
constexpr auto probe = R"(
SELECT seq, id, url, title, summary, copiedAt, isExported, isVisible FROM links
UNION ALL SELECT seq, id, domain, 0, 0, addedAt, 0, 0 FROM excludedDomains LIMIT 0)";

std::optional<StoreError> unusableFile(const QFileInfo &file)
{
    if (!file.isFile())
        return StoreError{Kind::cannotOpen, file.filePath() + u" is not a file"};
    if (file.size() == 0) // SQLite would take it for a new database
        return StoreError{Kind::damaged, u"the file is empty"_s};
    return std::nullopt;
}

/// Builds the store under another name and renames it, so that there is a whole one or none.
void create(const QString &path)
{
    const QByteArray draft = QFile::encodeName(path + u".new");
    unlink(draft.constData());
    if (const int made = open(draft.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        made >= 0)
        close(made); // SQLite gives its other files the same permissions
    {
        SQLite::Database database(draft.toStdString(), SQLite::OPEN_READWRITE);
        SQLite::Transaction transaction(database);
        database.exec(schema);
        database.exec("PRAGMA application_id=" + std::to_string(applicationId));
        database.exec("PRAGMA user_version=" + std::to_string(schemaVersion));
        transaction.commit();
    }
    if (rename(draft.constData(), QFile::encodeName(path).constData()) != 0)
        throw SQLite::Exception("rename", SQLITE_CANTOPEN);
}

} // namespace

StoreDatabase::StoreDatabase(const std::string &name, int flags)
    : m_connection(name, flags, busyMilliseconds)
{
}

QString StoreDatabase::pathIn(const QString &folder)
{
    return folder + u"/strandloom.sqlite";
}

Expected<std::unique_ptr<StoreDatabase>, StoreError> StoreDatabase::open(const QString &folder)
{
    const QString path = pathIn(folder);
    try {
        if (!QFileInfo::exists(path))
            create(path);
        else if (const auto error = unusableFile(QFileInfo(path)))
            return Unexpected{*error};

        std::unique_ptr<StoreDatabase> store(
            new StoreDatabase(QFile::encodeName(path).toStdString(), SQLite::OPEN_READWRITE));
        if (const auto error = store->mismatch())
            return Unexpected{*error};
        store->m_connection.exec("PRAGMA journal_mode=WAL");
        store->m_connection.exec("PRAGMA synchronous=FULL");
        store->m_connection.exec("BEGIN IMMEDIATE; ROLLBACK"); // tells whether it can be written
        return store;
    } catch (const SQLite::Exception &exception) {
        return Unexpected{storeError(exception)};
    }
}

Expected<std::unique_ptr<StoreDatabase>, StoreError>
StoreDatabase::openReadOnly(const QString &folder)
{
    const QString path = pathIn(folder);
    if (const auto error = unusableFile(QFileInfo(path)))
        return Unexpected{*error};
    try {
        // Without a log nobody writes, and only as "immutable" SQLite makes no files beside it.
        const bool hasLog = QFileInfo::exists(path + u"-wal");
        const QByteArray name = "file:" + QFile::encodeName(path).toPercentEncoding("/")
            + (hasLog ? "" : "?immutable=1");
        std::unique_ptr<StoreDatabase> store(
            new StoreDatabase(name.toStdString(), SQLite::OPEN_READONLY | SQLite::OPEN_URI));
        if (const auto error = store->mismatch())
            return Unexpected{*error};
        return store;
    } catch (const SQLite::Exception &exception) {
        return Unexpected{storeError(exception)};
    }
}

/// Opening succeeds on anything; the first statements tell what it is.
std::optional<StoreError> StoreDatabase::mismatch()
{
    const int id = m_connection.execAndGet("PRAGMA application_id").getInt();
    if (id != applicationId)
        return StoreError{Kind::foreign, {}};
    const int version = m_connection.execAndGet("PRAGMA user_version").getInt();
    if (version > schemaVersion)
        return StoreError{Kind::newer, u"schema version %1"_s.arg(version)};
    if (version < schemaVersion || m_connection.tryExec(probe) != SQLITE_OK)
        return StoreError{Kind::damaged, u"schema version %1"_s.arg(version)};
    return std::nullopt;
}

Query StoreDatabase::query(std::string_view sql)
{
    const auto known = m_statements.find(sql.data());
    if (known != m_statements.end())
        return Query(known->second);
    return Query(
        m_statements.try_emplace(sql.data(), m_connection, std::string(sql)).first->second);
}
