// A host that binds by name: load the built library by path and resolve
// every routine of the export list.
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

TEST(Exports, EveryListedRoutineResolvesByName) {
#if defined(_WIN32)
    HMODULE lib = LoadLibraryA(SHELLFE_LIBRARY_PATH);
    ASSERT_NE(lib, nullptr) << SHELLFE_LIBRARY_PATH;
    for (const char* name : kExportedNames)
        EXPECT_NE(reinterpret_cast<void*>(GetProcAddress(lib, name)), nullptr) << name;
    EXPECT_EQ(GetProcAddress(lib, "matmuldlldotnet"), nullptr) << "names are case-sensitive";
    FreeLibrary(lib);
#else
    void* lib = dlopen(SHELLFE_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(lib, nullptr) << dlerror();
    for (const char* name : kExportedNames) EXPECT_NE(dlsym(lib, name), nullptr) << name;
    // Internal symbols stay hidden.
    EXPECT_EQ(dlsym(lib, "_ZN7shellfe8best_isaEv"), nullptr);
    dlclose(lib);
#endif
}

}  // namespace
