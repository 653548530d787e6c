// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "ExcludedDomain.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Statement.h>

/// The columns of a link, in the order in which `linkFrom` reads them.
#define LINK_COLUMNS "id, url, title, summary, copiedAt, isExported, isVisible"

/// How records become columns and back. These throw what SQLiteCpp throws.

/// Absent when a column holds what no writer of ours puts there.
std::optional<CapturedLink> linkFrom(SQLite::Statement &row);
/// The same of a row that begins with `copiedAt` and `id`.
std::optional<ListPosition> positionFrom(SQLite::Statement &row);
/// The same of a row that begins with `id`, `domain` and `addedAt`.
std::optional<ExcludedDomain> domainFrom(SQLite::Statement &row);
void bindId(SQLite::Statement &statement, int place, const QUuid &id);
void bindInstant(SQLite::Statement &statement, int place, Instant instant);
void bindText(SQLite::Statement &statement, int place, const std::optional<QString> &text);
/// All columns of `LINK_COLUMNS`, from the first place on.
void bindLink(SQLite::Statement &statement, const CapturedLink &link);

std::optional<QUuid> idFrom(const SQLite::Column &column);
QString textFrom(const SQLite::Column &column);
