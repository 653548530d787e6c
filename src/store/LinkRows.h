// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "ExcludedDomain.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Statement.h>

/// The columns of a link, in the order in which `linkFrom` reads them.
#define LINK_COLUMNS "id, url, title, summary, copiedAt, isExported, isVisible"

/// How records become columns and back. These throw what SQLiteCpp throws.

CapturedLink linkFrom(SQLite::Statement &row);
void bindId(SQLite::Statement &statement, int place, const QUuid &id);
void bindInstant(SQLite::Statement &statement, int place, Instant instant);
void bindText(SQLite::Statement &statement, int place, const std::optional<QString> &text);

QUuid idFrom(const SQLite::Column &column);
Instant instantFrom(const SQLite::Column &column);
QString textFrom(const SQLite::Column &column);
