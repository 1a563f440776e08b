#pragma once

#include "platform/platform.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a report must not reveal of its user. Empty members are unknown.
struct PrivateNames {
    std::string homeFolder;
    std::string userName;
    std::vector<std::string> computerNames;
};

/// Those of the user who runs this program.
PrivateNames privateNames(const Host& host);

/// Replaces private names in texts. Case doesn't count, and neither does which separators a path has.
class Anonymizer {
public:
    explicit Anonymizer(const PrivateNames& names);

    /// With "<home>" for the home folder; "<user>" for the user's name as a part of a path, and for every folder in
    /// "Users" and "/home"; "<computer>" for the computer's name as a word, with or without its domain.
    std::string anonymized(std::string_view text) const;

private:
    struct Replacement {
        const char* text;
        /// The index behind what it replaces.
        std::size_t end;
    };

    /// Each in every encoding in which files may have it.
    std::vector<std::string> homeFolders;
    std::vector<std::string> userNames;
    std::vector<std::string> computerNames;

    /// What to write in place of a private name that begins at `at`; `done` is the index behind the last one.
    std::optional<Replacement> replacementAt(std::string_view text, std::size_t done, std::size_t at) const;
};
