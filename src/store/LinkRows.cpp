// SPDX-License-Identifier: MIT
#include "LinkRows.h"

#include "Utf8.h"

namespace
{

constexpr int idSize = 16;
/// Some 70,000 years either way, so that times can be subtracted.
constexpr int64_t timeLimit = int64_t(1) << 61;

bool isTextOrNull(const SQLite::Column &column)
{
    return column.isText() || column.isNull();
}

std::optional<Instant> instantFrom(const SQLite::Column &column)
{
    const int64_t time = column.isInteger() ? column.getInt64() : timeLimit;
    return time > -timeLimit && time < timeLimit ? std::optional(Instant(Instant::duration(time)))
                                                 : std::nullopt;
}

std::optional<QString> optionalTextFrom(const SQLite::Column &column)
{
    return column.isNull() ? std::nullopt : std::optional(textFrom(column));
}

} // namespace

std::optional<CapturedLink> linkFrom(SQLite::Statement &row)
{
    const auto id = idFrom(row.getColumn(0));
    const auto copiedAt = instantFrom(row.getColumn(4));
    const bool isSound = id && copiedAt && row.getColumn(1).isText()
        && isTextOrNull(row.getColumn(2)) && isTextOrNull(row.getColumn(3))
        && row.getColumn(5).isInteger() && row.getColumn(6).isInteger();
    if (!isSound)
        return std::nullopt;
    return CapturedLink{*id,
                        textFrom(row.getColumn(1)),
                        optionalTextFrom(row.getColumn(2)),
                        optionalTextFrom(row.getColumn(3)),
                        *copiedAt,
                        row.getColumn(5).getInt64() != 0,
                        row.getColumn(6).getInt64() != 0};
}

std::optional<ListPosition> positionFrom(SQLite::Statement &row)
{
    const auto copiedAt = instantFrom(row.getColumn(0));
    const auto id = idFrom(row.getColumn(1));
    return copiedAt && id ? std::optional(ListPosition{*copiedAt, *id}) : std::nullopt;
}

std::optional<ExcludedDomain> domainFrom(SQLite::Statement &row)
{
    const auto id = idFrom(row.getColumn(0));
    const auto addedAt = instantFrom(row.getColumn(2));
    if (!id || !addedAt || !row.getColumn(1).isText())
        return std::nullopt;
    return ExcludedDomain{*id, textFrom(row.getColumn(1)), *addedAt};
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

void bindLink(SQLite::Statement &statement, const CapturedLink &link)
{
    bindId(statement, 1, link.id);
    bindText(statement, 2, link.url);
    bindText(statement, 3, link.title);
    bindText(statement, 4, link.summary);
    bindInstant(statement, 5, link.copiedAt);
    statement.bind(6, link.isExported);
    statement.bind(7, link.isVisible);
}

std::optional<QUuid> idFrom(const SQLite::Column &column)
{
    if (!column.isBlob() || column.getBytes() != idSize)
        return std::nullopt;
    return QUuid::fromRfc4122(QByteArrayView(static_cast<const char *>(column.getBlob()), idSize));
}

QString textFrom(const SQLite::Column &column)
{
    const char *const text = column.getText(); // before the size: it may convert
    return readUtf8({text, column.getBytes()});
}
