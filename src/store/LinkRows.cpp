// SPDX-License-Identifier: MIT
#include "LinkRows.h"

#include "Utf8.h"

namespace
{

std::optional<QString> optionalTextFrom(const SQLite::Column &column)
{
    return column.isNull() ? std::nullopt : std::optional(textFrom(column));
}

} // namespace

CapturedLink linkFrom(SQLite::Statement &row)
{
    CapturedLink link;
    link.id = idFrom(row.getColumn(0));
    link.url = textFrom(row.getColumn(1));
    link.title = optionalTextFrom(row.getColumn(2));
    link.summary = optionalTextFrom(row.getColumn(3));
    link.copiedAt = instantFrom(row.getColumn(4));
    link.isExported = row.getColumn(5).getInt() != 0;
    link.isVisible = row.getColumn(6).getInt() != 0;
    return link;
}

void bindId(SQLite::Statement &statement, int place, const QUuid &id)
{
    const QByteArray bytes = id.toRfc4122();
    statement.bind(place, bytes.constData(), int(bytes.size()));
}

void bindInstant(SQLite::Statement &statement, int place, Instant instant)
{
    statement.bind(place, int64_t(instant.time_since_epoch().count()));
}

void bindText(SQLite::Statement &statement, int place, const std::optional<QString> &text)
{
    if (text)
        statement.bind(place, text->toStdString());
    else
        statement.bind(place);
}

QUuid idFrom(const SQLite::Column &column)
{
    return QUuid::fromRfc4122(
        QByteArrayView(static_cast<const char *>(column.getBlob()), column.getBytes()));
}

Instant instantFrom(const SQLite::Column &column)
{
    return Instant(Instant::duration(column.getInt64()));
}

QString textFrom(const SQLite::Column &column)
{
    const char *const text = column.getText(); // before the size: it may convert
    return readUtf8({text, column.getBytes()});
}
