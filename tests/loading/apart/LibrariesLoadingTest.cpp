// A host that links neither library and loads them at run time.

#include "infrastructure/QueltInTraceClass.h"

#include "loading/support/ExportedNames.h"
#include "loading/support/Library.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

using namespace quelt::test;

constexpr const char* s_coreFile = QUELT_CORE_FILE;
constexpr const char* s_moduleFile = QUELT_MODULE_FILE;

class LibrariesLoading : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bothAreGone()); }
    void TearDown() override {
        setEnvironment("QUELT_TRACE", nullptr);
        EXPECT_TRUE(bothAreGone());
        for (const std::filesystem::path& file : {m_first, m_second}) {
            std::filesystem::remove(file);
        }
    }

    static bool bothAreGone() { return !Library::isLoaded(s_coreFile) && !Library::isLoaded(s_moduleFile); }

    static std::filesystem::path traceFile(const char* name) {
        return std::filesystem::temp_directory_path() /
               (std::string("quelt-loading-") +
                testing::UnitTest::GetInstance()->current_test_info()->name() + name);
    }

    std::filesystem::path m_first = traceFile("-1.txt");
    std::filesystem::path m_second = traceFile("-2.txt");
};

std::string textOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Writes a line from a method through the core's trace facility.
void trace(const Library& core, const char* text) {
    alignas(QueltInTraceClass) std::array<std::byte, sizeof(QueltInTraceClass)> place{};
    core.function<MakeTrace>(s_makeTrace)(place.data(), "SampleClass", "SampleDomain");
    auto* const object = reinterpret_cast<QueltInTraceClass*>(place.data());
    core.function<SetMethod>(s_setMethod)(object, "run");
    core.function<Append>(s_append)(&core.function<BeginTrace>(s_beginTrace)(object, 0), text);
    core.function<EndTrace>(s_endTrace)(object, 0);
    core.function<RemoveMethod>(s_removeMethod)(object);
}

TEST_F(LibrariesLoading, TheModuleBringsTheCoreAndBothGoTogether) {
    for (int round = 0; round < 20; ++round) {
        {
            const Library module(s_moduleFile);
            EXPECT_TRUE(Library::isLoaded(s_coreFile));
            module.function<Marker>(s_marker)();
        }
        ASSERT_TRUE(bothAreGone());
    }
}

TEST_F(LibrariesLoading, TheCoreStaysWhenItWasThereBefore) {
    const Library core(s_coreFile);
    for (int round = 0; round < 5; ++round) {
        { const Library module(s_moduleFile); }
        ASSERT_FALSE(Library::isLoaded(s_moduleFile));
        ASSERT_TRUE(Library::isLoaded(s_coreFile));
    }
}

TEST_F(LibrariesLoading, TheCoreGoesAlthoughThreadsThatLiveHaveTraced) {
    setEnvironment("QUELT_TRACE", m_first.string().c_str());
    {
        const Library core(s_coreFile);
        trace(core, "here");
        std::thread([&core] { trace(core, "there"); }).join();
    }
    EXPECT_TRUE(bothAreGone());
    EXPECT_EQ(textOf(m_first), "SampleDomain SampleClass::run: here\nSampleDomain SampleClass::run: there\n");
}

TEST_F(LibrariesLoading, TheTraceGoesWhereTheEnvironmentSaysAtEachLoad) {
    setEnvironment("QUELT_TRACE", m_first.string().c_str());
    {
        const Library core(s_coreFile);
        setEnvironment("QUELT_TRACE", m_second.string().c_str());
        trace(core, "first");
    }
    {
        const Library core(s_coreFile);
        trace(core, "second");
    }
    EXPECT_EQ(textOf(m_first), "SampleDomain SampleClass::run: first\n");
    EXPECT_EQ(textOf(m_second), "SampleDomain SampleClass::run: second\n");
}

TEST_F(LibrariesLoading, ThreadsMayLoadBothAtOnce) {
    constexpr int rounds = 100;
    const auto use = [](const char* path) {
        for (int round = 0; round < rounds; ++round) {
            const Library library(path);
        }
    };
    std::thread other(use, s_coreFile);
    use(s_moduleFile);
    other.join();
}

TEST_F(LibrariesLoading, WhatIsNotExportedIsNotFound) {
    const Library module(s_moduleFile);
    EXPECT_THROW(static_cast<void>(module.function<Marker>("QueltDataMigrationWithAnotherName")),
                 std::runtime_error);
    EXPECT_THROW(Library(std::string(s_moduleFile) + ".not-there"), std::runtime_error);
}

} // namespace
