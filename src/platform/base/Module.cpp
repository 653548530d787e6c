// SPDX-License-Identifier: MIT
#include "Module.h"

#include <dlfcn.h>
#include <filesystem>
#include <string_view>

namespace
{

/// By the place of the running program, which nobody else can choose.
std::filesystem::path pathOf(const char *name)
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path() / STRANDLOOM_MODULE_PATH / (std::string(name) + ".so");
}

} // namespace

LoadedModule<ModuleOffer> loadModule(const char *name)
{
    using Entry = const ModuleOffer *(*)();
    void *const module = dlopen(pathOf(name).c_str(), RTLD_LAZY | RTLD_LOCAL);
    void *const entry = module ? dlsym(module, "strandloomModule") : nullptr;
    if (!entry)
        return Unexpected{
            std::string("A part of Strandloom cannot be loaded; restart it, or install it anew: ")
            + dlerror()};
    const ModuleOffer *const offer = reinterpret_cast<Entry>(entry)();
    if (std::string_view(offer->version) != STRANDLOOM_VERSION)
        return Unexpected{std::string("Strandloom was updated; restart it")};
    return offer;
}
