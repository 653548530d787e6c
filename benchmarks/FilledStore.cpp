// SPDX-License-Identifier: MIT
#include "FilledStore.h"

#include "StoreDatabase.h"
#include "SystemClock.h"

#include <QDir>
#include <QFile>

#include <map>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace
{

void execute(const QString &folder, const std::string &sql)
{
    sqlite3 *database = nullptr;
    sqlite3_open(qPrintable(StoreDatabase::pathIn(folder)), &database);
    if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        qFatal("%s", sqlite3_errmsg(database));
    sqlite3_close(database);
}

/// A store of that many links, made once.
QString seed(int rows)
{
    static std::map<int, QTemporaryDir> seeds;
    const auto [found, isNew] = seeds.try_emplace(rows, QDir::current().filePath(u"seed-"_s));
    const QString folder = found->second.path();
    if (isNew) {
        opened(folder).reset();
        const std::string last = std::to_string(rows);
        const std::string first = std::to_string(firstCopy.time_since_epoch().count());
        execute(folder,
                "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n) "
                "INSERT INTO links(id, url, title, summary, copiedAt, isExported, isVisible) "
                "SELECT randomblob(16), 'https://www.example.com/articles/' || i || '/read', "
                "'The title of the article with the number ' || i, "
                "iif(i % 2, 'A sentence that sums up what article ' || i || ' is about, in "
                "about as many words as most of them have.', NULL), "
                    + first + " + i * 1000000, 0, 1 FROM n LIMIT " + last);
    }
    return folder;
}

} // namespace

FilledStore::FilledStore(int rows)
    : m_directory(QDir::current().filePath(u"store-"_s))
{
    QFile::copy(StoreDatabase::pathIn(seed(rows)), StoreDatabase::pathIn(path()));
}

std::unique_ptr<ModelContainer> opened(const QString &folder)
{
    static SystemClock clock;
    auto container = ModelContainer::open(folder, clock);
    if (!container)
        qFatal("%s", qPrintable(description(container.error())));
    return std::move(*container);
}
