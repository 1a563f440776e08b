#include "platform/windows/simconnect_dll.h"

#include "platform/file_system.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <filesystem>
#include <string>

namespace {

std::string programFolder() {
    return FileSystem::parentPath(systemPlatform().host.executablePath());
}

std::string bytesOf(const std::string& fileName) {
    std::string bytes;
    EXPECT_TRUE(FileSystem::readFile(FileSystem::join(programFolder(), fileName), bytes));
    return bytes;
}

// What the loader says of a DLL with that content.
std::string faultOf(const std::string& content) {
    const TempFolder folder;
    const std::string path = folder.write("client.dll", content);
    std::string error;
    EXPECT_FALSE(loadSimConnectDll(path, error).has_value());
    const std::string beginning = path + " can't be used: ";
    EXPECT_TRUE(error.starts_with(beginning)) << error;
    return error.substr(std::min(beginning.size(), error.size()));
}

// An executable file's heads for a kind of processor, and nothing behind them.
std::string headsFor(std::uint16_t machine) {
    IMAGE_DOS_HEADER dosHeader{};
    dosHeader.e_magic = IMAGE_DOS_SIGNATURE;
    dosHeader.e_lfanew = sizeof dosHeader;
    IMAGE_NT_HEADERS32 headers{};
    headers.Signature = IMAGE_NT_SIGNATURE;
    headers.FileHeader.Machine = machine;
    headers.FileHeader.SizeOfOptionalHeader = sizeof headers.OptionalHeader;
    headers.FileHeader.Characteristics = IMAGE_FILE_EXECUTABLE_IMAGE | IMAGE_FILE_32BIT_MACHINE | IMAGE_FILE_DLL;
    headers.OptionalHeader.Magic = IMAGE_NT_OPTIONAL_HDR32_MAGIC;
    headers.OptionalHeader.SizeOfCode = 0x200;
    headers.OptionalHeader.AddressOfEntryPoint = 0x1000;
    headers.OptionalHeader.ImageBase = 0x10000000;
    headers.OptionalHeader.SectionAlignment = 0x1000;
    headers.OptionalHeader.FileAlignment = 0x200;
    headers.OptionalHeader.MajorSubsystemVersion = 6;
    headers.OptionalHeader.SizeOfImage = 0x2000;
    headers.OptionalHeader.SizeOfHeaders = 0x200;
    headers.OptionalHeader.Subsystem = IMAGE_SUBSYSTEM_WINDOWS_GUI;
    headers.OptionalHeader.NumberOfRvaAndSizes = IMAGE_NUMBEROF_DIRECTORY_ENTRIES;
    std::string file(reinterpret_cast<const char*>(&dosHeader), sizeof dosHeader);
    file.append(reinterpret_cast<const char*>(&headers), sizeof headers);
    file.resize(0x200);
    return file;
}

TEST(LoadSimConnectDll, BindsEveryOperationToItsExport) {
    std::string error;
    const auto library = loadSimConnectDll("simconnect-complete.dll", error);
    ASSERT_TRUE(library.has_value()) << error;
    SimConnectHandle handle = nullptr;
    EXPECT_EQ(library->open(&handle, "name", nullptr, 0, nullptr, 7), 107);
    EXPECT_EQ(handle, &handle);
    EXPECT_EQ(library->close(handle), 2);
    EXPECT_EQ(library->addToDataDefinition(handle, 1, "a", "b", 1, 0.0F, simConnectUnused), 4);
    EXPECT_EQ(library->requestDataOnSimObject(handle, 1, 1, 0, 3, 1, 0, 0, 5), 505);
    EXPECT_EQ(library->mapClientEventToSimEvent(handle, 1, "event"), 6);
    EXPECT_EQ(library->transmitClientEvent(handle, 0, 1, 0, 1, 16), 716);
    EXPECT_EQ(library->mapClientDataNameToId(handle, "name", 1), 8);
    EXPECT_EQ(library->addToClientDataDefinition(handle, 1, 0, 256, 0.0F, simConnectUnused), 9);
    EXPECT_EQ(library->requestClientData(handle, 1, 1, 1, 3, 1, 0, 0, 0), 10);
    std::array<std::uint8_t, 4> data{1, 2, 3, 4};
    EXPECT_EQ(library->setClientData(handle, 1, 1, 0, 0, 4, data.data()), 1104);
    EXPECT_EQ(error, "");
}

TEST(LoadSimConnectDll, DispatchReachesTheCallersFunction) {
    std::string error;
    const auto library = loadSimConnectDll("simconnect-complete.dll", error);
    ASSERT_TRUE(library.has_value()) << error;
    std::uint32_t id = 0;
    const auto proc = [](SimConnectRecv* message, std::uint32_t, void* context) {
        *static_cast<std::uint32_t*>(context) = message->dwID;
    };
    EXPECT_EQ(library->callDispatch(nullptr, proc, &id), 3);
    EXPECT_EQ(id, simConnectRecvQuit);
}

TEST(LoadSimConnectDll, NamesTheOperationThatALibraryLacks) {
    std::string error;
    EXPECT_FALSE(loadSimConnectDll("simconnect-incomplete.dll", error).has_value());
    EXPECT_EQ(error, FileSystem::join(programFolder(), "simconnect-incomplete.dll") +
                         " can't be used: it lacks the function SimConnect_SetClientData");
}

class LackedOperation : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(AllEleven, LackedOperation,
                         testing::Values("SimConnect_Open", "SimConnect_Close", "SimConnect_CallDispatch",
                                         "SimConnect_AddToDataDefinition", "SimConnect_RequestDataOnSimObject",
                                         "SimConnect_MapClientEventToSimEvent", "SimConnect_TransmitClientEvent",
                                         "SimConnect_MapClientDataNameToID", "SimConnect_AddToClientDataDefinition",
                                         "SimConnect_RequestClientData", "SimConnect_SetClientData"));

TEST_P(LackedOperation, IsMissed) {
    const std::string name = GetParam();
    std::string library = bytesOf("simconnect-complete.dll");
    const std::size_t place = library.find(name + '\0');
    ASSERT_NE(place, std::string::npos);
    library[place + name.size() - 1] = '_';
    EXPECT_EQ(faultOf(library), "it lacks the function " + name);
}

TEST(LoadSimConnectDll, SaysThatThereIsNone) {
    std::string error;
    EXPECT_FALSE(loadSimConnectDll("no-such-library.dll", error).has_value());
    EXPECT_EQ(error, "There is no no-such-library.dll beside the program or in the system folder");
}

TEST(LoadSimConnectDll, SaysThatALibraryIsMadeFor32BitPrograms) {
    const std::string fault = faultOf(headsFor(IMAGE_FILE_MACHINE_I386));
    EXPECT_TRUE(fault.starts_with("it is made for 32-bit programs, and this is a 64-bit one (error ")) << fault;
}

TEST(LoadSimConnectDll, SaysThatALibraryIsMadeForAnotherProcessor) {
    const std::string fault = faultOf(headsFor(IMAGE_FILE_MACHINE_ARM64));
    EXPECT_TRUE(fault.starts_with("it is made for another kind of processor (error ")) << fault;
}

TEST(LoadSimConnectDll, SaysThatALibraryThatItNeedsIsMissing) {
    std::string error;
    EXPECT_FALSE(loadSimConnectDll("simconnect-needy.dll", error).has_value());
    EXPECT_EQ(error, FileSystem::join(programFolder(), "simconnect-needy.dll") +
                         " can't be used: a library that it needs is missing; install the Visual C++ runtime (x64) "
                         "(error 126)");
}

TEST(LoadSimConnectDll, SaysThatAFileIsNoLibrary) {
    const std::string fault = "the file is damaged, or no Windows library (error 193)";
    EXPECT_EQ(faultOf("<html>404 Not Found</html>"), fault);
    EXPECT_EQ(faultOf("MZ"), fault);
    EXPECT_EQ(faultOf(std::string(5000, '\xFF')), fault);
    // Its heads would begin far behind the file's end.
    IMAGE_DOS_HEADER dosHeader{};
    dosHeader.e_magic = IMAGE_DOS_SIGNATURE;
    dosHeader.e_lfanew = 0x7FFFFFFF;
    EXPECT_EQ(faultOf(std::string(reinterpret_cast<const char*>(&dosHeader), sizeof dosHeader)), fault);
    dosHeader.e_lfanew = -1;
    EXPECT_EQ(faultOf(std::string(reinterpret_cast<const char*>(&dosHeader), sizeof dosHeader)), fault);
}

TEST(LoadSimConnectDll, SaysThatAnEmptyFileIsNoLibrary) {
    EXPECT_TRUE(faultOf("").starts_with("the file is damaged, or no Windows library (error "));
}

TEST(LoadSimConnectDll, SaysThatALibraryIsDamaged) {
    EXPECT_EQ(faultOf(bytesOf("simconnect-complete.dll").substr(0, 3000)),
              "it, or a library that it needs, is damaged (error 193)");
}

TEST(LoadSimConnectDll, SaysThatAccessIsDenied) {
    const TempFolder folder;
    const std::string path = folder.write("client.dll", bytesOf("simconnect-complete.dll"));
    const HANDLE held = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    std::string error;
    EXPECT_FALSE(loadSimConnectDll(path, error).has_value());
    EXPECT_TRUE(error.starts_with(path + " can't be used: Windows denies access to the file (error ")) << error;
    CloseHandle(held);
}

TEST(LoadSimConnectDll, NeverLooksInTheWorkingFolder) {
    const TempFolder folder;
    folder.write("planted.dll", bytesOf("simconnect-complete.dll"));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(FileSystem::fromBytes(folder.path()));
    std::string error;
    EXPECT_FALSE(loadSimConnectDll("planted.dll", error).has_value());
    EXPECT_EQ(error, "There is no planted.dll beside the program or in the system folder");
    std::filesystem::current_path(before);
}

TEST(LoadSimConnectDll, LooksBesideTheProgramAlsoFromAnotherWorkingFolder) {
    const TempFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(FileSystem::fromBytes(folder.path()));
    std::string error;
    EXPECT_TRUE(loadSimConnectDll("simconnect-complete.dll", error).has_value()) << error;
    std::filesystem::current_path(before);
}

// No SimConnect.dll lies beside the test program.
TEST(SystemSimConnectLibrary, FallsBackOnTheBuiltInClientAndSaysWhy) {
    const SimConnectLibrary library = systemPlatform().simConnect;
    const std::string notice = "There is no SimConnect.dll beside the program or in the system folder; using the "
                               "built-in SimConnect client";
    EXPECT_EQ(library.notice(), notice);
    EXPECT_EQ(library.close(nullptr), simConnectInvalidArgument);
    EXPECT_EQ(systemPlatform().simConnect.notice(), notice);
}

} // namespace
