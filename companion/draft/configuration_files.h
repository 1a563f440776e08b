#pragma once

#include "companion/draft/configuration_texts.h"
#include "companion/draft/file_replacement.h"

#include <optional>
#include <string>

/// The three files of a configuration on disk: reads them, and writes all of them or none. One thread.
class ConfigurationFiles {
public:
    explicit ConfigurationFiles(std::string configPath, FileOperations operations = systemFileOperations());

    /// Reads the files. False with the reason in `error` when one is there but can't be read, or when `config.json`
    /// doesn't say where the command file is; then there is nothing to change.
    bool read(std::string& error);

    /// Whether there is a `config.json`, as read.
    bool exist() const { return onDisk[ConfigurationPart::Settings].has_value(); }
    const ConfigurationPaths& paths() const { return filePaths; }

    /// The files as read; what a new configuration begins with for those that aren't there.
    ConfigurationTexts texts() const;

    /// A file as read; empty for one that isn't there.
    std::string textOnDisk(ConfigurationPart part) const { return onDisk[part].value_or(""); }

    /// Whether saving would write that file.
    bool wouldWrite(ConfigurationPart part, const ConfigurationTexts& texts) const {
        return onDisk[part] != texts[part];
    }

    /// Whether the files are still as they were read; otherwise `error` names the first that isn't.
    bool areUnchanged(std::string& error) const;

    /// Writes the files that differ, each with the old one kept beside it as NAME.bak. Refuses if one of the three is
    /// no longer as it was read. False with the reason in `error`; the files are then as they were.
    bool save(const ConfigurationTexts& texts, std::string& error);

private:
    FileOperations operations;
    ConfigurationPaths filePaths;
    /// None for a file that isn't there.
    ForEachPart<std::optional<std::string>> onDisk;

    bool readPart(ConfigurationPart part, std::string& error);
    bool findOtherFiles(std::string& error);
};
