// SPDX-License-Identifier: MIT
#include "StoreBackup.h"

#include "AtomicFile.h"
#include "DebugLog.h"
#include "ReadStore.h"
#include "StoreLock.h"
#include "StoreReader.h"

#include <QDateTime>
#include <QFile>

#include <cerrno>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

using Done = Expected<void, StoreError>;

/// Long enough for another command line, which lets go again.
constexpr auto lockPatience = 1s;

Unexpected<StoreError> cannotOpen(const QString &detail)
{
    return Unexpected{StoreError{StoreError::Kind::cannotOpen, detail}};
}

/// Into an empty file. Throws what SQLiteCpp throws.
void copyInto(StoreDatabase &store, const QString &path)
{
    Query copy = store.query("VACUUM INTO ?");
    copy->bind(1, QFile::encodeName(path).toStdString());
    copy->exec();
}

Done copyFile(const QString &from, const QString &to)
{
    const auto store = StoreDatabase::openFileReadOnly(from);
    if (!store)
        return Unexpected{store.error()};
    return (*store)->attempt([&] { copyInto(**store, to); });
}

/// Gives a file a second name; true when there was none.
bool linkIfThere(const QString &from, const QString &to)
{
    return link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0
        || errno == ENOENT;
}

bool remove(const QString &path)
{
    return unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT;
}

/// Gives the store, and its log where that cannot be folded into it, a second name, and takes the
/// log out of the place of the store, lest it is played into the other one.
Expected<QString, StoreError> keepOld(const QString &folder)
{
    // Opening and closing folds the log in; a damaged store is kept as it is.
    if (const auto sound = checkIntegrity(folder); !sound)
        debugLog(u"The old store is not sound: " + description(sound.error()));
    else if (const auto store = StoreDatabase::open(folder))
        (*store)->foldLogAtEnd();
    const QString path = StoreDatabase::pathIn(folder);
    const QString now = QDateTime::currentDateTime().toString(u"yyyy-MM-dd-HHmmss-zzz");
    const QString kept = folder + u"/strandloom-" + now + u".sqlite";
    const QString log = StoreDatabase::logOf(path);
    if (!linkIfThere(path, kept) || !linkIfThere(log, StoreDatabase::logOf(kept)) || !remove(log)
        || !remove(StoreDatabase::indexOf(path)))
        return cannotOpen(kept + u": " + qt_error_string());
    return kept;
}

} // namespace

Expected<bool, QString> backUpStore(const QString &folder, const QString &path)
{
    auto file = AtomicFile::open(path, FileAudience::owner);
    if (!file)
        return Unexpected{description(file.error())};
    const auto draft = file->draft();
    if (!draft)
        return Unexpected{description(draft.error())};
    const auto copied = readStore(folder, [&draft](StoreDatabase &store) {
        QFile::resize(*draft, 0); // in the second attempt
        copyInto(store, *draft);
        return true;
    });
    if (!copied)
        return Unexpected{description(copied.error())};
    if (!*copied)
        return false;
    if (const auto checked = checkStoreFile(*draft); !checked)
        return Unexpected{description(checked.error())};
    if (const auto committed = file->commit(); !committed)
        return Unexpected{description(committed.error())};
    return true;
}

Expected<std::optional<QString>, StoreError> restoreStore(const QString &folder,
                                                          const QString &path)
{
    if (const auto checked = checkStoreFile(path); !checked)
        return Unexpected{checked.error()};
    const auto lock = StoreLock::take(folder, lockPatience);
    if (!lock)
        return Unexpected{lock.error()};
    auto file = AtomicFile::open(StoreDatabase::pathIn(folder), FileAudience::owner);
    if (!file)
        return cannotOpen(description(file.error()));
    const auto draft = file->draft();
    if (!draft)
        return cannotOpen(description(draft.error()));
    if (const auto copied = copyFile(path, *draft); !copied)
        return Unexpected{copied.error()};
    if (const auto checked = checkStoreFile(*draft); !checked)
        return Unexpected{checked.error()};

    const QString old = StoreDatabase::pathIn(folder);
    const auto hasOld = isStoreFileThere(old);
    if (!hasOld)
        return Unexpected{hasOld.error()};
    std::optional<QString> kept;
    if (*hasOld) {
        const auto keptOld = keepOld(folder);
        if (!keptOld)
            return Unexpected{keptOld.error()};
        kept = *keptOld;
    }
    if (const auto committed = file->commit(); !committed) {
        if (kept) // its log belongs to it again
            linkIfThere(StoreDatabase::logOf(*kept), StoreDatabase::logOf(old));
        return cannotOpen(description(committed.error()));
    }
    return kept;
}
