#include "companion/draft/file_replacement.h"

#include "companion/draft/flush.h"
#include "platform/file_system.h"

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <set>
#include <system_error>

namespace {

std::string newPath(const FileReplacement& file) {
    return file.path + ".new";
}

std::string backupPath(const FileReplacement& file) {
    return file.path + ".bak";
}

std::string newBackupPath(const FileReplacement& file) {
    return backupPath(file) + ".new";
}

std::string lastReason() {
    return errno == 0 ? "the system gives no reason" : std::generic_category().message(errno);
}

std::string writeWhole(const std::string& path, const std::string& text) {
    errno = 0;
    std::ofstream file = FileSystem::openForWriting(path);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return file ? "" : lastReason();
}

std::string copyWhole(const std::string& from, const std::string& to) {
    std::string reason;
    return FileSystem::copyFile(from, to, reason) ? "" : reason;
}

std::string renameOver(const std::string& from, const std::string& to) {
    return FileSystem::renameFile(from, to) ? "" : "it can't be replaced; it may be open in another program";
}

/// A link stays one: the file behind it is replaced.
FileReplacement behindLinks(FileReplacement file) {
    file.path = FileSystem::resolved(file.path).value_or(file.path);
    return file;
}

/// One attempt.
class Replacing {
public:
    Replacing(const std::vector<FileReplacement>& wanted, const FileOperations& operations) : operations(operations) {
        for (const FileReplacement& file : wanted) {
            files.push_back(behindLinks(file));
        }
    }

    bool run(std::string& error) {
        const std::set<std::string> folders = changingFolders();
        error = prepare();
        while (error.empty() && replaced < files.size()) {
            error = replace(files[replaced]);
            replaced += error.empty() ? 1 : 0;
        }
        for (auto folder = folders.begin(); error.empty() && folder != folders.end(); ++folder) {
            const std::string reason = operations.flush(*folder);
            error = reason.empty() ? "" : *folder + " can't be written: " + reason;
        }
        if (!error.empty()) {
            error += undo();
        }
        return error.empty();
    }

private:
    const FileOperations& operations;
    std::vector<FileReplacement> files;
    std::size_t replaced = 0;

    /// Those of the files, and those in which a folder is made. The current one has no name.
    std::set<std::string> changingFolders() const {
        std::set<std::string> folders;
        for (const FileReplacement& file : files) {
            // A root is its own parent.
            for (std::string folder = FileSystem::parentPath(file.path);
                 folders.insert(folder.empty() ? "." : folder).second && !FileSystem::existsOrFalse(folder);) {
                folder = FileSystem::parentPath(folder);
            }
        }
        return folders;
    }

    std::string prepare() const {
        for (const FileReplacement& file : files) {
            FileSystem::makeFolders(FileSystem::parentPath(file.path));
            // One that an earlier attempt has left may be read-only.
            FileSystem::remove(newPath(file));
            // The copy gives the new file the old one's permissions.
            std::string reason = file.exists ? operations.copy(file.path, newPath(file)) : "";
            reason = reason.empty() ? operations.write(newPath(file), file.text) : reason;
            reason = reason.empty() ? operations.flush(newPath(file)) : reason;
            if (!reason.empty()) {
                return file.path + " can't be written: " + reason;
            }
        }
        return "";
    }

    std::string replace(const FileReplacement& file) const {
        std::string reason = file.exists ? keepOld(file) : "";
        reason = reason.empty() ? operations.rename(newPath(file), file.path) : reason;
        return reason.empty() ? "" : file.path + " can't be replaced: " + reason;
    }

    /// The earlier backup stays until this one is whole.
    std::string keepOld(const FileReplacement& file) const {
        FileSystem::remove(newBackupPath(file));
        std::string reason = operations.copy(file.path, newBackupPath(file));
        reason = reason.empty() ? operations.flush(newBackupPath(file)) : reason;
        return reason.empty() ? operations.rename(newBackupPath(file), backupPath(file)) : reason;
    }

    /// Returns what to add to the message.
    std::string undo() {
        for (const FileReplacement& file : files) {
            FileSystem::remove(newPath(file));
            FileSystem::remove(newBackupPath(file));
        }
        std::string lost;
        while (replaced > 0) {
            const FileReplacement& file = files[--replaced];
            if (!file.exists) {
                FileSystem::remove(file.path);
            } else if (!FileSystem::renameFile(backupPath(file), file.path)) {
                lost += ". " + file.path + " can't be restored; its old text is in " + backupPath(file);
            }
        }
        return lost.empty() ? ". Nothing was changed" : lost;
    }
};

} // namespace

FileOperations systemFileOperations() {
    return {writeWhole, copyWhole, renameOver, flushToDisk};
}

bool replaceFiles(const std::vector<FileReplacement>& files, const FileOperations& operations, std::string& error) {
    return Replacing(files, operations).run(error);
}
