// What the executables say about themselves.

#include "platform/file_system.h"
#include "tests/windows/installed_bridge.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

class ProgramResources : public testing::TestWithParam<std::string> {
protected:
    ~ProgramResources() override { FreeLibrary(module); }

    std::string resource(LPCSTR type, WORD number) const {
        const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(number), type);
        if (found == nullptr) {
            return {};
        }
        const HGLOBAL loaded = LoadResource(module, found);
        return {static_cast<const char*>(LockResource(loaded)), SizeofResource(module, found)};
    }

    std::vector<char> versionInformation() const {
        DWORD ignored = 0;
        std::vector<char> data(GetFileVersionInfoSizeA(path.c_str(), &ignored));
        if (!data.empty()) {
            GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data());
        }
        return data;
    }

    std::string path = FileSystem::join(FileSystem::parentPath(builtExecutable()), GetParam() + ".exe");
    HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
};

std::string versionText(const std::vector<char>& data, const std::string& name) {
    void* text = nullptr;
    UINT length = 0;
    const bool found = VerQueryValueA(data.data(), ("\\StringFileInfo\\040904B0\\" + name).c_str(), &text, &length);
    return found ? static_cast<const char*>(text) : "";
}

TEST_P(ProgramResources, VersionIsTheProjectsInTextAndNumbers) {
    const std::vector<char> data = versionInformation();
    ASSERT_FALSE(data.empty());
    EXPECT_EQ(versionText(data, "FileVersion"), BRIDGE_VERSION);
    EXPECT_EQ(versionText(data, "ProductVersion"), BRIDGE_VERSION);
    EXPECT_EQ(versionText(data, "ProductName"), "VantrelBridgeHID");
    EXPECT_EQ(versionText(data, "OriginalFilename"), GetParam() + ".exe");
    EXPECT_NE(versionText(data, "FileDescription"), "");

    void* found = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(data.data(), "\\", &found, &length));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    const std::string text = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                             std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                             std::to_string(HIWORD(fixed->dwFileVersionLS));
    EXPECT_EQ(text, BRIDGE_VERSION);
    EXPECT_EQ(fixed->dwProductVersionMS, fixed->dwFileVersionMS);
    EXPECT_EQ(fixed->dwProductVersionLS, fixed->dwFileVersionLS);
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_APP));
}

TEST_P(ProgramResources, IconComesInFourSizes) {
    const std::string group = resource(RT_GROUP_ICON, 1);
    // A head of 6 bytes, then 14 for each picture: its width first, 0 for 256, and its number last.
    constexpr std::size_t headSize = 6;
    constexpr std::size_t entrySize = 14;
    ASSERT_EQ(group.size(), headSize + 4 * entrySize);
    std::vector<int> widths;
    for (std::size_t at = headSize; at < group.size(); at += entrySize) {
        widths.push_back(static_cast<unsigned char>(group[at]));
        WORD number = 0;
        std::memcpy(&number, &group[at + entrySize - sizeof number], sizeof number);
        EXPECT_FALSE(resource(RT_ICON, number).empty());
    }
    EXPECT_EQ(widths, (std::vector<int>{16, 32, 48, 0}));
}

TEST_P(ProgramResources, ManifestAsksForLongPathsButNoRightsAndNoCodePageAndNamesTheSystems) {
    const std::string manifest = resource(RT_MANIFEST, 1);
    EXPECT_NE(manifest.find(R"(<requestedExecutionLevel level="asInvoker" uiAccess="false"/>)"), std::string::npos);
    EXPECT_NE(manifest.find(R"(<supportedOS Id="{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"/>)"), std::string::npos);
    EXPECT_NE(manifest.find(">true</longPathAware>"), std::string::npos);
    EXPECT_NE(manifest.find("version=\"" BRIDGE_VERSION ".0\""), std::string::npos);
    // EXE.xml takes the bytes of paths as they are and declares the system's code page.
    EXPECT_EQ(manifest.find("<activeCodePage"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramResources, testing::Values("VantrelBridgeHID", "vantrel"),
                         [](const auto& program) { return program.param; });

} // namespace
