// SPDX-License-Identifier: MIT
#include "StoreError.h"

#include "Utf8.h"

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace
{

StoreError::Kind kindOf(int extendedCode)
{
    using Kind = StoreError::Kind;
    switch (extendedCode) { // a quota, of which SQLite knows nothing, shows as a refused write
    case SQLITE_IOERR_WRITE:
    case SQLITE_IOERR_SHMOPEN:
    case SQLITE_IOERR_SHMSIZE:
        return Kind::full;
    }
    switch (extendedCode & 0xff) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_TOOBIG: // a text larger than any of ours
        return Kind::damaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return Kind::locked;
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return Kind::cannotOpen;
    case SQLITE_FULL:
        return Kind::full;
    default:
        return Kind::failed;
    }
}

QString reason(StoreError::Kind kind)
{
    switch (kind) {
    case StoreError::Kind::cannotOpen:
        return u"The store cannot be opened"_s;
    case StoreError::Kind::damaged:
        return u"The store is damaged"_s;
    case StoreError::Kind::foreign:
        return u"The file is not a store of Strandloom"_s;
    case StoreError::Kind::newer:
        return u"The store was written by a newer version of Strandloom"_s;
    case StoreError::Kind::locked:
        return u"Another program is using the store"_s;
    case StoreError::Kind::gone:
        return u"The store was removed or replaced"_s;
    case StoreError::Kind::full:
        return u"There is no space left for the store"_s;
    case StoreError::Kind::failed:
        return u"The store failed"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

StoreError storeError(const SQLite::Exception &exception)
{
    const int code = exception.getExtendedErrorCode();
    const QString detail = u"%1 (SQLite %2)"_s.arg(readUtf8(exception.what())).arg(code);
    return {kindOf(code), detail};
}

QString description(const StoreError &error)
{
    return error.detail.isEmpty() ? reason(error.kind)
                                  : QString(reason(error.kind) + u": " + error.detail);
}
