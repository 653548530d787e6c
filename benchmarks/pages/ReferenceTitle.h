// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The rule for titles over ICU's regular expressions; empty when the page has none.
QString referenceTitle(const QString &html);
