// The core library's two search paths, in a process of their own: once the
// core library is loaded it stays loaded, so this cannot share a process.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "kit/host_kit.h"

namespace zvf::test {
namespace {

namespace fs = std::filesystem;

struct Scratch {
    Scratch() : root(fs::temp_directory_path() / ("zvf-core-search-" + std::to_string(getpid()))) {
        fs::create_directories(root / "module");
        fs::copy_file(fs::path(host::ProgramDirectory()) / "ZelVideoFilters.tpi", root / "module" / "ZelVideoFilters.tpi",
                      fs::copy_options::overwrite_existing);
    }
    ~Scratch() {
        std::error_code ignored;
        fs::current_path(fs::temp_directory_path(), ignored);
        fs::remove_all(root, ignored);
    }
    fs::path root;
};

Scratch& Dir() {
    static Scratch s;
    return s;
}

TEST(CoreLibrarySearch, WithoutACoreLibraryEverySaveFails) {
    fs::current_path(Dir().root);
    std::string error;
    auto m = host::LoadedModule::Load((Dir().root / "module" / "ZelVideoFilters.tpi").string(), host::HostOptions(),
                                      &error);
    ASSERT_TRUE(m) << error;
    for (const char* name : {"Block Color", "Monotone"}) {
        auto inst = m->Create(*m->Find(name));
        IParameterBlob* blob = reinterpret_cast<IParameterBlob*>(1);
        EXPECT_EQ((*inst)->SaveParameters(&blob), status::fail) << name;
        EXPECT_EQ(blob, nullptr) << name;
    }
}

TEST(CoreLibrarySearch, SecondPathIsTriedRelativeToTheWorkingFolder) {
    // "../../../WIN32/Release/ZelCore.DLL" from root/a/b/c is root/WIN32/Release.
    fs::create_directories(Dir().root / "WIN32" / "Release");
    fs::create_directories(Dir().root / "a" / "b" / "c");
    fs::copy_file(fs::path(host::ProgramDirectory()) / "ZelCore.DLL", Dir().root / "WIN32" / "Release" / "ZelCore.DLL",
                  fs::copy_options::overwrite_existing);
    fs::current_path(Dir().root / "a" / "b" / "c");
    auto m = host::LoadedModule::Load((Dir().root / "module" / "ZelVideoFilters.tpi").string());
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Block Color"));
    std::vector<uint8_t> saved;
    EXPECT_EQ(inst->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 101u);
}

}  // namespace
}  // namespace zvf::test
