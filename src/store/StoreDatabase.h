#pragma once

#include "Expected.h"
#include "StoreError.h"

#include <QString>

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <map>
#include <memory>
#include <string_view>

/// A prepared statement lent for one use; given back ready for the next. Its operations throw what
/// SQLiteCpp throws.
class Query
{
public:
    explicit Query(SQLite::Statement &statement)
        : m_statement(statement)
    {
    }
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;
    ~Query() { m_statement.tryReset(); } // an open read would keep the log from shrinking

    SQLite::Statement *operator->() { return &m_statement; }
    SQLite::Statement &operator*() { return m_statement; }

private:
    SQLite::Statement &m_statement;
};

/// The open store file, known to be ours and of this version. One thread at a time.
class StoreDatabase
{
public:
    static QString pathIn(const QString &folder);

    /// Opens the store in `folder` for writing, and makes a new one where there is none. Whatever
    /// is damaged, foreign or newer is left as it is. The caller holds the `StoreLock`.
    static Expected<std::unique_ptr<StoreDatabase>, StoreError> open(const QString &folder);
    /// Opens the store in `folder` for reading, changing nothing on disk.
    static Expected<std::unique_ptr<StoreDatabase>, StoreError> openReadOnly(const QString &folder);

    /// `sql` is a literal: it is prepared once and kept under its address.
    Query query(std::string_view sql);
    SQLite::Database &connection() { return m_connection; }

private:
    StoreDatabase(const std::string &name, int flags);
    std::optional<StoreError> mismatch();

    SQLite::Database m_connection;
    std::map<const char *, SQLite::Statement> m_statements;
};
