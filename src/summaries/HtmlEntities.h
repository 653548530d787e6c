// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Replaces the sixteen entities that summaries know; others stay. "&amp;lt;" ends as "<".
std::string decodeHtmlEntities(std::string text);
