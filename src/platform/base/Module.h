// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <string>

/// What a module offers: the functions in a type derived from this.
///
/// A module is a part of the program in a file of its own, with the large libraries that only it
/// needs. It has its own copy of whatever code of ours it uses; so it and the rest share nothing
/// but what these functions pass, and no object with virtual functions among that. It exports one
/// function, `extern "C" const ModuleOffer *strandloomModule()`, which any thread may call.
struct ModuleOffer {
    const char *version = STRANDLOOM_VERSION; ///< of the program that the module belongs to
};

/// The offer, or a sentence for the user without a full stop that says why there is none.
template <typename Offer>
using LoadedModule = Expected<const Offer *, std::string>;

/// Loads the module `name` on the first call, and never unloads it. Any thread; reads from disk.
LoadedModule<ModuleOffer> loadModule(const char *name);

template <typename Offer>
LoadedModule<Offer> loadModule()
{
    const auto loaded = loadModule(Offer::name);
    if (!loaded)
        return Unexpected{loaded.error()};
    return static_cast<const Offer *>(*loaded);
}
