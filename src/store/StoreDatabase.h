// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "StoreError.h"

#include <QString>

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

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

/// Whether the store, or a file beside it, is at `path`, by the rule of `isThere`.
Expected<bool, StoreError> isStoreFileThere(const QString &path);

/// The open store file, known to be ours and of this version. One thread at a time.
class StoreDatabase
{
public:
    using Opened = Expected<std::unique_ptr<StoreDatabase>, StoreError>;

    static QString pathIn(const QString &folder);
    /// The write-ahead log beside the store at `path`, and the log's index.
    static QString logOf(const QString &path);
    static QString indexOf(const QString &path);

    /// Opens the store in `folder` for writing, and makes a new one where there is none. Whatever
    /// is damaged, foreign or newer is left as it is. The caller holds the `StoreLock`.
    static Opened open(const QString &folder);
    /// Opens the store in `folder` for reading, making and changing no file on disk.
    static Opened openReadOnly(const QString &folder);
    /// The same of a store under another name.
    static Opened openFileReadOnly(const QString &path);

    /// `sql` is a literal: it is prepared once and kept under its address. Throws what SQLiteCpp
    /// throws.
    Query query(std::string_view sql);

    /// What `work` returns, or what SQLite threw out of it.
    template <typename Work>
    auto attempt(Work work) -> Expected<std::invoke_result_t<Work>, StoreError>
    {
        try {
            if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
                work();
                return {};
            } else {
                return work();
            }
        } catch (const SQLite::Exception &exception) {
            return Unexpected{storeError(exception)};
        }
    }
    /// The same as one transaction: all of it is on disk, or nothing.
    template <typename Work>
    Expected<void, StoreError> transaction(Work work)
    {
        return attempt([&] {
            SQLite::Transaction transaction(m_connection);
            work();
            transaction.commit();
        });
    }

private:
    enum class Access { readWrite, readOnly, immutable, unshared };

    StoreDatabase(const QString &path, Access access);
    static Opened connect(const QString &path, Access access);
    std::optional<StoreError> mismatch();
    void prepareForWriting();

    SQLite::Database m_connection;
    std::map<const char *, SQLite::Statement> m_statements;
};
