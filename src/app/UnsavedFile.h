// SPDX-License-Identifier: MIT
#pragma once

class ModelContext;
class QString;

/// At the end of the program: tries once more to write what waits in memory, puts the rest into a
/// file beside the store in `folder`, which `strandloom import` reads, and names it on standard
/// error. Where even that fails, the addresses themselves go there.
void keepUnsavedLinks(ModelContext &context, const QString &folder);
