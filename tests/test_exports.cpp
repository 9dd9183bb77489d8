// A host that binds by name: load the built library by path and resolve
// every routine of the interface description.
#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

const char* const kExportedNames[] = {
#include "export_names.inc"
};

#if defined(_WIN32)
void* open_library() { return LoadLibraryA(SHELLFE_LIBRARY_PATH); }
void* lookup(void* lib, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(lib), name));
}
void close_library(void* lib) { FreeLibrary(static_cast<HMODULE>(lib)); }
#else
void* open_library() { return dlopen(SHELLFE_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL); }
void* lookup(void* lib, const char* name) { return dlsym(lib, name); }
void close_library(void* lib) { dlclose(lib); }
#endif

TEST(Exports, EveryDescribedRoutineResolvesByNameAndNothingInternal) {
    void* lib = open_library();
    ASSERT_NE(lib, nullptr) << SHELLFE_LIBRARY_PATH;
    for (const char* name : kExportedNames) EXPECT_NE(lookup(lib, name), nullptr) << name;
    EXPECT_EQ(lookup(lib, "matmuldlldotnet"), nullptr) << "names are case-sensitive";
    // A library built without its export list would let internals out too.
    EXPECT_EQ(lookup(lib, "_ZN7shellfe8best_isaEv"), nullptr);
    close_library(lib);
}

}  // namespace
