#include "tools/filter/settings_file.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include <thread>

#include "tools/file_bytes.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

const Settings kSome = {{"b5db97bc-0172", {{0x54687368, 10}, {0x42696173, -2147483647 - 1}}},
                        {"another plug-in", {{0, 1}, {0x5B3D5D0A, 2147483647}}}};

TEST(SettingsFile, WhatIsWrittenIsReadBack) {
    Settings settings = kSome;
    settings["two]\n[lines"] = settings[""] = {{1, 1}};  // would break the file
    EXPECT_EQ(ParseSettings(FormatSettings(settings)), kSome);
    EXPECT_NE(FormatSettings(kSome).find("\nThsh=10\n"), std::string::npos);
}

TEST(SettingsFile, SoundLinesCountAmongDamagedOnes) {
    const std::string text =
        "Bias=1\n[unfinished\nBias=2\n[good]\r\nThsh=12\r\nSftn=\nBias=3x\nPDPX=99999999999\nab=4\n=\n\xFF\xFE=1\n"
        "[bad\x01name]\nBias=5\n[]\nBias=6\n[good]\nBias=8\nBias=-7";
    const Settings expected = {{"good", {{0x54687368, 12}, {0x42696173, -7}}}};
    EXPECT_EQ(ParseSettings(text), expected);
}

TEST(SettingsFile, StoringReplacesTheFileOrLeavesItAlone) {
    const std::filesystem::path directory = std::filesystem::path(testing::TempDir()) / "stairmelt settings";
    std::filesystem::remove_all(directory);
    std::filesystem::create_directory(directory);
    const std::filesystem::path path = directory / PathFromText("\xC3\xA9.settings");
    EXPECT_EQ(LoadSettings(path), Settings{});
    StoreSettings(path, kSome);
    StoreSettings(path, kSome);
    EXPECT_EQ(LoadSettings(path), kSome);
    EXPECT_THROW(StoreSettings(directory / "missing" / "file", kSome), ToolError);
    EXPECT_THROW(LoadSettings(directory), ToolError);
    // Nothing else has been left behind.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory), {}), 1);
    std::filesystem::remove_all(directory);
}

TEST(FileNames, AreThoseThatWindowsAllows) {
    for (const char* name : {"con", "Aux.png", "nul.a.b", "COM1.tif", "lpt9", "a.", "b ", "c\"d", "e|f", "g*"})
        EXPECT_THROW(RequireReplaceable(name), ToolError) << name;
    for (const char* name : {"com0.png", "lpt10", "aux1", "./.png", "a.con"})
        EXPECT_NO_THROW(RequireReplaceable(name)) << name;
}

#ifdef _WIN32
TEST(SettingsFile, AnotherProgramMayHoldTheFileForAnInstant) {
    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "stairmelt held.settings";
    StoreSettings(path, {});
    const auto open = [](const std::filesystem::path& file, DWORD access, DWORD flags) {
        return CreateFileW(file.c_str(), access, 0, nullptr, OPEN_ALWAYS, flags, nullptr);
    };
    const HANDLE held = open(path, GENERIC_READ, 0);
    EXPECT_THROW(LoadSettings(path), ToolError);
    // And another one that is about to replace it.
    const HANDLE unfinished = open(path.native() + L".unfinished", GENERIC_WRITE, FILE_FLAG_DELETE_ON_CLOSE);
    {
        const std::jthread holder([=] {
            Sleep(50);
            CloseHandle(held);
        });
        StoreSettings(path, kSome);
    }
    CloseHandle(unfinished);
    EXPECT_EQ(LoadSettings(path), kSome);
    std::filesystem::remove(path);
}
#endif

}  // namespace
}  // namespace stairmelt
