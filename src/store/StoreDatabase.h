// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "StoreError.h"

#include <QByteArray>
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
#include <sys/types.h>
#include <type_traits>
#include <utility>

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
    /// is damaged, foreign or newer is left as it is. A log that was left over is folded in when
    /// something could be written. The caller holds the `StoreLock`.
    static Opened open(const QString &folder);
    /// Opens the store in `folder` for reading, making and changing no file on disk.
    static Opened openReadOnly(const QString &folder);
    /// The same of a store under another name.
    static Opened openFileReadOnly(const QString &path);

    /// Whether the store had a log when it was opened for writing, as after a writer that did not
    /// come to its end.
    bool wasLeftOpen() const { return m_wasLeftOpen; }

    /// `sql` is a literal: it is prepared once and kept under its address. Throws what SQLiteCpp
    /// throws.
    Query query(std::string_view sql);

    /// Runs statements that return nothing. Throws what SQLiteCpp throws.
    void execute(const char *statements);
    /// Lets the last to close the store fold its log into it.
    void foldLogAtEnd();
    /// Folds the log in now, as far as readers allow, so that it holds nothing that was deleted.
    Expected<void, StoreError> emptyLog();

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
    /// The same as one transaction: all of it is done, or nothing.
    template <typename Work>
    Expected<void, StoreError> atOnce(Work work)
    {
        return attempt([&] {
            SQLite::Transaction transaction(m_connection);
            work();
            transaction.commit();
        });
    }
    /// The same for changes of what is on disk. Fails where the file is no longer in its place:
    /// what is written into it then is lost.
    template <typename Work>
    Expected<void, StoreError> transaction(Work work)
    {
        if (const auto error = displaced())
            return Unexpected{*error};
        const auto done = atOnce(std::move(work));
        if (done)
            foldLogAtEnd();
        return done;
    }

private:
    enum class Access { readWrite, readOnly, immutable, unshared };

    StoreDatabase(const QString &path, Access access);
    static Opened connect(const QString &path, Access access);
    void setOption(int option, bool isOn);
    std::optional<StoreError> mismatch();
    std::optional<StoreError> displaced() const;
    void prepareForWriting();

    QByteArray m_name;
    bool m_wasLeftOpen = false;
    std::optional<std::pair<dev_t, ino_t>> m_file;
    SQLite::Database m_connection;
    std::map<const char *, SQLite::Statement> m_statements;
};
