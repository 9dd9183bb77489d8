// Finds and loads the distributed mode's module. It is looked for next to
// the program, in ../lib beside it, and where the build put it.
#include <string>
#include <vector>

#include "slab.hpp"

#if defined(SLAB_PETSC_MODULE) && (defined(__unix__) || defined(__APPLE__))
#include <dlfcn.h>
#include <unistd.h>

namespace slab {

const DistributedMode* distributed_mode(std::string& error) {
    const std::string built = SLAB_PETSC_MODULE, name = built.substr(built.find_last_of('/') + 1);
    std::vector<std::string> places;
    char exe[4096];
    if (const ssize_t len = readlink("/proc/self/exe", exe, sizeof exe - 1); len > 0) {
        const std::string path(exe, std::size_t(len)), dir = path.substr(0, path.find_last_of('/') + 1);
        places.push_back(dir + name);
        places.push_back(dir + "../lib/" + name);
    }
    places.push_back(built);
    error = "the module " + name + " was not found";
    for (const std::string& p : places) {
        if (access(p.c_str(), R_OK) != 0) continue;
        // Global, as MPI's own components look for its symbols.
        void* module = dlopen(p.c_str(), RTLD_NOW | RTLD_GLOBAL);
        if (!module) {
            const char* why = dlerror();
            error = "cannot load " + p + ": " + (why ? why : "unknown error");
            return nullptr;
        }
        using Entry = const DistributedMode* (*)();
        if (auto entry = reinterpret_cast<Entry>(dlsym(module, "slab_distributed_mode"))) return entry();
        error = p + " is not the slab's distributed mode";
        return nullptr;
    }
    return nullptr;
}

}  // namespace slab

#else

namespace slab {

const DistributedMode* distributed_mode(std::string& error) {
    error = "this build has no distributed mode (PETSc was not found when it was configured; install petsc-dev "
            "and reconfigure)";
    return nullptr;
}

}  // namespace slab

#endif
