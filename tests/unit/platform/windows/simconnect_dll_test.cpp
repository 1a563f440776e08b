#include "platform/windows/simconnect_dll.h"

#include "platform/file_system.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

namespace {

TEST(LoadSimConnectDll, BindsEveryOperationToItsExport) {
    const auto library = loadSimConnectDll("simconnect-complete.dll");
    ASSERT_TRUE(library.has_value());
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
}

TEST(LoadSimConnectDll, DispatchReachesTheCallersFunction) {
    const auto library = loadSimConnectDll("simconnect-complete.dll");
    ASSERT_TRUE(library.has_value());
    std::uint32_t id = 0;
    const auto proc = [](SimConnectRecv* message, std::uint32_t, void* context) {
        *static_cast<std::uint32_t*>(context) = message->dwID;
    };
    EXPECT_EQ(library->callDispatch(nullptr, proc, &id), 3);
    EXPECT_EQ(id, simConnectRecvQuit);
}

TEST(LoadSimConnectDll, RefusesALibraryThatLacksAnOperation) {
    EXPECT_FALSE(loadSimConnectDll("simconnect-incomplete.dll").has_value());
}

TEST(LoadSimConnectDll, FindsNothingUnderAnUnknownName) {
    EXPECT_FALSE(loadSimConnectDll("no-such-library.dll").has_value());
}

TEST(LoadSimConnectDll, NeverLooksInTheWorkingFolder) {
    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "bridge-test-working-folder";
    const std::string own = FileSystem::parentPath(systemPlatform().host.executablePath());
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(FileSystem::fromBytes(FileSystem::join(own, "simconnect-complete.dll")),
                               folder / "planted.dll", std::filesystem::copy_options::overwrite_existing);
    std::filesystem::current_path(folder);
    EXPECT_FALSE(loadSimConnectDll("planted.dll").has_value());
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
}

} // namespace
