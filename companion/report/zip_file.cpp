#include "companion/report/zip_file.h"

#include "platform/file_system.h"

#include <minizip/zip.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace {

zip_fileinfo infoOf(const std::tm& time) {
    const auto number = [](int value) { return static_cast<uInt>(value); };
    zip_fileinfo info{};
    info.tmz_date.tm_sec = number(time.tm_sec);
    info.tmz_date.tm_min = number(time.tm_min);
    info.tmz_date.tm_hour = number(time.tm_hour);
    info.tmz_date.tm_mday = number(time.tm_mday);
    info.tmz_date.tm_mon = number(time.tm_mon);
    info.tmz_date.tm_year = number(time.tm_year + 1900);
    return info;
}

bool addEntry(zipFile archive, const ZipEntry& entry, const zip_fileinfo& info) {
    constexpr int bestCompression = 9;
    return zipOpenNewFileInZip(archive, entry.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                               bestCompression) == ZIP_OK &&
           zipWriteInFileInZip(archive, entry.content.data(), static_cast<unsigned>(entry.content.size())) == ZIP_OK &&
           zipCloseFileInZip(archive) == ZIP_OK;
}

} // namespace

bool writeZip(const std::string& path, const std::vector<ZipEntry>& entries, const std::tm& time, std::string& error) {
    // An interrupted run leaves no archive that only looks like one.
    const std::string partPath = path + ".part";
    errno = 0;
    // It opens the path as the C library does, by the bytes of the system's code page.
    zipFile archive = zipOpen(partPath.c_str(), APPEND_STATUS_CREATE);
    bool done = archive != nullptr && std::ranges::all_of(entries, [&](const ZipEntry& entry) {
                    return addEntry(archive, entry, infoOf(time));
                });
    done = archive != nullptr && zipClose(archive, nullptr) == ZIP_OK && done;
    done = done && FileSystem::renameFile(partPath, path);
    if (!done) {
        error = std::generic_category().message(errno == 0 ? EIO : errno);
        FileSystem::remove(partPath);
    }
    return done;
}
