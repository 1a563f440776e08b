#include "companion/doctor/machine.h"

#include "platform/file_system.h"

bool canWriteInto(const std::string& folder) {
    const std::string path = FileSystem::join(folder, "vantrel-write-test.tmp");
    if (FileSystem::existsOrFalse(path)) {
        // Of an interrupted check-up, or somebody else's.
        return FileSystem::openForAppending(path).is_open();
    }
    std::ofstream file = FileSystem::openForWriting(path);
    file << "test";
    file.close();
    FileSystem::remove(path);
    return !file.fail();
}
