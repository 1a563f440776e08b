#include "platform/windows/simconnect_dll.h"

#include "platform/file_system.h"
#include "platform/windows/simconnect_dll_fault.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <filesystem>
#include <string>

namespace {

std::string besideProgram(const std::string& fileName) {
    return FileSystem::join(FileSystem::parentPath(systemPlatform().host.executablePath()), fileName);
}

/// A copy of a library that loads, in a folder of its own, with a change to its bytes.
class LibraryCopy {
public:
    LibraryCopy() { EXPECT_TRUE(FileSystem::readFile(besideProgram("simconnect-complete.dll"), bytes)); }

    /// What the loader says of the copy, behind its path.
    std::string fault() const {
        const std::string path = folder.write(name, bytes);
        std::string error;
        EXPECT_FALSE(loadSimConnectDll(path, error).has_value());
        const std::string beginning = path + " can't be used: ";
        EXPECT_TRUE(error.starts_with(beginning)) << error;
        return error.substr(std::min(beginning.size(), error.size()));
    }

    const TempFolder folder;
    const std::string name = "copy.dll";
    std::string bytes;
};

/// The process's working folder until the test is over.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& folder) { std::filesystem::current_path(FileSystem::fromBytes(folder)); }
    ~WorkingFolder() { std::filesystem::current_path(before); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    const std::filesystem::path before = std::filesystem::current_path();
};

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
    std::uint32_t id = 0;
    const auto proc = [](SimConnectRecv* message, std::uint32_t, void* context) {
        *static_cast<std::uint32_t*>(context) = message->dwID;
    };
    EXPECT_EQ(library->callDispatch(handle, proc, &id), 3);
    EXPECT_EQ(id, simConnectRecvQuit);
    EXPECT_EQ(error, "");
}

TEST(LoadSimConnectDll, NamesTheOperationThatALibraryLacks) {
    for (const std::string operation :
         {"SimConnect_Open", "SimConnect_Close", "SimConnect_CallDispatch", "SimConnect_AddToDataDefinition",
          "SimConnect_RequestDataOnSimObject", "SimConnect_MapClientEventToSimEvent", "SimConnect_TransmitClientEvent",
          "SimConnect_MapClientDataNameToID", "SimConnect_AddToClientDataDefinition", "SimConnect_RequestClientData",
          "SimConnect_SetClientData"}) {
        LibraryCopy library;
        const std::size_t place = library.bytes.find(operation + '\0');
        ASSERT_NE(place, std::string::npos) << operation;
        library.bytes[place + operation.size() - 1] = '_';
        EXPECT_EQ(library.fault(), "it lacks the function " + operation);
    }
}

TEST(LoadSimConnectDll, NamesALibraryThatNeedsAMissingOne) {
    std::string error;
    EXPECT_FALSE(loadSimConnectDll("simconnect-needy.dll", error).has_value());
    EXPECT_EQ(error, besideProgram("simconnect-needy.dll") +
                         " can't be used: a library that it needs is missing; install the Visual C++ runtime (x64) "
                         "(error 126)");
}

TEST(LoadSimConnectDll, ReportsABadOrTruncatedLibrary) {
    LibraryCopy library;
    library.bytes.resize(3000);
    EXPECT_EQ(library.fault(), "it, or a library that it needs, is damaged (error 193)");
    library.bytes = "<html>404 Not Found</html>";
    EXPECT_EQ(library.fault(), "the file is damaged, or no Windows library (error 193)");
}

TEST(LoadSimConnectDll, LooksBesideTheProgramAndNeverInTheWorkingFolder) {
    const LibraryCopy library;
    library.folder.write(library.name, library.bytes);
    const WorkingFolder working(library.folder.path());
    std::string error;
    EXPECT_FALSE(loadSimConnectDll(library.name, error).has_value());
    EXPECT_EQ(error, "There is no copy.dll beside the program or in the system folder");
    EXPECT_TRUE(loadSimConnectDll("simconnect-complete.dll", error).has_value()) << error;
}

/// An executable file's heads, whose second one begins at `position`.
std::string headsFor(std::uint16_t machine, LONG position = sizeof(IMAGE_DOS_HEADER)) {
    IMAGE_DOS_HEADER dosHeader{};
    dosHeader.e_magic = IMAGE_DOS_SIGNATURE;
    dosHeader.e_lfanew = position;
    IMAGE_NT_HEADERS headers{};
    headers.Signature = IMAGE_NT_SIGNATURE;
    headers.FileHeader.Machine = machine;
    return std::string(reinterpret_cast<const char*>(&dosHeader), sizeof dosHeader)
        .append(reinterpret_cast<const char*>(&headers), sizeof headers);
}

TEST(SimConnectDllFault, FollowsFromTheFileAndTheSystemsError) {
    const std::string forThisSystem = headsFor(IMAGE_FILE_MACHINE_AMD64);
    const std::string noLibrary = "the file is damaged, or no Windows library (error 193)";
    const struct {
        std::string content;
        std::uint32_t code;
        std::string fault;
    } cases[] = {
        {headsFor(IMAGE_FILE_MACHINE_I386), 193,
         "it is made for 32-bit programs, and this is a 64-bit one (error 193)"},
        {headsFor(IMAGE_FILE_MACHINE_ARM64), 193, "it is made for another kind of processor (error 193)"},
        {forThisSystem, ERROR_PROC_NOT_FOUND,
         "a library that it needs is too old; install the current Visual C++ runtime (x64) (error 127)"},
        {forThisSystem, ERROR_ACCESS_DENIED, "Windows denies access to the file (error 5)"},
        {forThisSystem, ERROR_SHARING_VIOLATION, "Windows denies access to the file (error 32)"},
        {forThisSystem, 225, "the virus scanner holds it back (error 225)"},
        {forThisSystem, 226, "the virus scanner holds it back (error 226)"},
        {forThisSystem, ERROR_DLL_INIT_FAILED, "it failed to start (error 1114)"},
        {forThisSystem, 5000, "Windows can't load it (error 5000)"},
        {"", ERROR_FILE_INVALID, "the file is damaged, or no Windows library (error 1006)"},
        {"MZ", 193, noLibrary},
        {std::string(5000, '\xFF'), 193, noLibrary},
        {headsFor(IMAGE_FILE_MACHINE_I386, 0x7FFFFFFF), 193, noLibrary},
        {headsFor(IMAGE_FILE_MACHINE_I386, -1), 193, noLibrary},
    };
    for (const auto& each : cases) {
        const TempFolder folder;
        const std::string path = folder.write("client.dll", each.content);
        EXPECT_EQ(simConnectDllFault(path, each.code), path + " can't be used: " + each.fault);
    }
}

// No SimConnect.dll is beside the test program.
TEST(SystemSimConnectLibrary, FallsBackOnTheBuiltInClientAndReportsWhy) {
    const SimConnectLibrary library = systemPlatform().simConnect;
    const std::string notice = "There is no SimConnect.dll beside the program or in the system folder; using the "
                               "built-in SimConnect client";
    EXPECT_EQ(library.notice(), notice);
    EXPECT_EQ(library.close(nullptr), simConnectInvalidArgument);
    EXPECT_EQ(systemPlatform().simConnect.notice(), notice);
}

} // namespace
