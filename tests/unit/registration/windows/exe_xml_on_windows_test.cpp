// What only Windows can show: variables of its code page, read-only files, files that others hold open.

#include "platform/platform.h"
#include "tests/unit/registration/exe_xml_machine.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace {

using Samples::entry;
using Samples::head;
using Samples::tail;

/// A variable of this process's environment, until the test is over.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::string& value)
        : name(name), before(std::getenv(name) == nullptr ? "" : std::getenv(name)) {
        _putenv_s(name, value.c_str());
    }
    ~EnvironmentVariable() { _putenv_s(name, before.c_str()); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* name;
    std::string before;
};

/// A file that another program has opened, sharing it as given.
class HeldFile {
public:
    HeldFile(const std::string& path, DWORD sharing)
        : handle(CreateFileA(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(handle, INVALID_HANDLE_VALUE);
    }
    ~HeldFile() { CloseHandle(handle); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

private:
    HANDLE handle;
};

/// A file of which another program has locked every byte: Windows lets others open it but neither read nor write it.
/// Wine lets them do all that.
class LockedFile {
public:
    explicit LockedFile(const std::string& path)
        : handle(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, 0, nullptr)) {
        EXPECT_TRUE(LockFile(handle, 0, 0, MAXDWORD, 0));
        std::string ignored;
        refuses = FileSystem::tryReadFile(path, ignored) == FileSystem::ReadOutcome::ReadFailed;
    }
    ~LockedFile() { CloseHandle(handle); }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    bool refusesToBeRead() const { return refuses; }

private:
    bool refuses = false;
    HANDLE handle;
};

class ExeXmlOnWindows : public ExeXmlMachine {
protected:
    static void setReadOnly(const std::string& path, bool readOnly) {
        EXPECT_TRUE(SetFileAttributesA(path.c_str(), readOnly ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL));
    }

    /// Windows refuses that for a read-only file; Wine doesn't where root runs it.
    static bool opensForWriting(const std::string& path) {
        const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        return file != INVALID_HANDLE_VALUE && CloseHandle(file);
    }

    std::string backupWarning(DWORD reason) const {
        return "[WARN] Failed to back up EXE.xml before writing: " + pathOf(Boxed) + " (" +
               std::system_category().message(static_cast<int>(reason)) + ")";
    }
};

TEST_F(ExeXmlOnWindows, UsesTheRealVariablesInTheSystemsCodePage) {
    const std::string data = folder.path() + "\\E\x80ro";
    const EnvironmentVariable roaming("APPDATA", data);
    const EnvironmentVariable local("LOCALAPPDATA", "");
    const std::string path = data + "\\Microsoft Flight Simulator 2024\\EXE.xml";
    FileSystem::makeFolders(FileSystem::parentPath(path));
    const Host realHost = systemPlatform().host;
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(realHost), std::vector<std::string>{path});
    EXPECT_EQ(ExeXmlRegistrar::registerInExeXml(realHost, Samples::name, Samples::path, Samples::commandLine, error),
              1);
    EXPECT_EQ(contentOf(path), head + entry + tail);
    EXPECT_EQ(ExeXmlRegistrar::unregisterFromExeXml(realHost, Samples::name, error), 1);
    EXPECT_EQ(contentOf(path), head + tail);
    EXPECT_EQ(contentOf(path + ".bak"), head + entry + tail);
}

TEST_F(ExeXmlOnWindows, KeepsForwardSlashesOfAVariable) {
    install(Boxed);
    std::string value = folder.path("Roaming");
    std::replace(value.begin(), value.end(), '\\', '/');
    fake.variables["APPDATA"] = value;
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host),
              std::vector<std::string>{value + "\\Microsoft Flight Simulator\\EXE.xml"});
}

TEST_F(ExeXmlOnWindows, AReadOnlyFileIsWrittenOnlyWhereTheSystemLetsItBe) {
    install(Boxed, head + tail);
    setReadOnly(pathOf(Boxed), true);
    const bool writable = opensForWriting(pathOf(Boxed));
    EXPECT_EQ(registerIt(), writable ? 1 : 0);
    EXPECT_EQ(error, writable ? "" : "Failed to open for write: " + pathOf(Boxed));
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + (writable ? entry : "") + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), head + tail);
    setReadOnly(pathOf(Boxed), false);
    setReadOnly(pathOf(Boxed) + ".bak", false);
}

TEST_F(ExeXmlOnWindows, AReadOnlyBackupIsReplacedOnlyWhereTheSystemLetsItBe) {
    install(Boxed, head + tail);
    put(pathOf(Boxed) + ".bak", "precious");
    setReadOnly(pathOf(Boxed) + ".bak", true);
    const bool writable = opensForWriting(pathOf(Boxed) + ".bak");
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), writable ? head + tail : "precious");
    EXPECT_EQ(log.has(backupWarning(ERROR_ACCESS_DENIED)), !writable);
    setReadOnly(pathOf(Boxed) + ".bak", false);
}

TEST_F(ExeXmlOnWindows, AFileHeldOpenWithoutSharingStaysAsItIs) {
    install(Boxed, head + tail);
    {
        const HeldFile holder(pathOf(Boxed), 0);
        EXPECT_EQ(ExeXmlRegistrar::readExeXml(pathOf(Boxed)), "");
        EXPECT_EQ(registerIt(), 0);
        EXPECT_EQ(unregisterIt(), 0);
    }
    EXPECT_EQ(error, "Failed to open for write: " + pathOf(Boxed));
    EXPECT_EQ(log.lines(), std::vector<std::string>{backupWarning(ERROR_SHARING_VIOLATION)});
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
}

TEST_F(ExeXmlOnWindows, AFileThatAnotherOnlyLetsBeReadIsBackedUpButStopsTheWork) {
    install(StoreCache, head + entry + tail);
    install(Boxed, head + entry + tail);
    for (const bool registering : {true, false}) {
        const HeldFile reader(pathOf(StoreCache), FILE_SHARE_READ);
        EXPECT_EQ(registering ? registerIt() : unregisterIt(), 0);
        EXPECT_EQ(std::exchange(error, ""), "Failed to open for write: " + pathOf(StoreCache));
        EXPECT_EQ(contentOf(pathOf(StoreCache) + ".bak"), head + entry + tail);
        EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entry + tail);
        EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + tail);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ExeXmlOnWindows, AFileThatAnotherHasLockedIsWrittenOnlyWhereTheSystemLetsItBeRead) {
    install(StoreCache);
    install(Boxed, head + tail);
    bool refused = false;
    {
        const LockedFile locked(pathOf(Boxed));
        refused = locked.refusesToBeRead();
        EXPECT_EQ(registerIt(), refused ? 1 : 2);
    }
    EXPECT_EQ(error, refused ? "EXE.xml could not be read: " + pathOf(Boxed) : "");
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + (refused ? "" : entry) + tail);
    EXPECT_EQ(exists(pathOf(Boxed) + ".bak"), !refused);
}

TEST_F(ExeXmlOnWindows, AFileThatAnotherSharesInFullIsWritten) {
    install(Boxed, head + tail);
    const HeldFile reader(pathOf(Boxed), FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + tail);
}

} // namespace
