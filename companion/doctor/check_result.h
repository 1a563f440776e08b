#pragma once

#include <string>
#include <vector>

enum class Mark {
    Good,
    Warning, ///< It may work all the same.
    Fault,   ///< Something doesn't work until this is fixed.
};

/// "good", "warning" or "fault".
const char* markName(Mark mark);

/// What the setup page can do about an answer, after asking.
struct Repair {
    /// "register", "write-file" or "make-folder"; empty for none.
    std::string code = {};
    /// The file or folder; empty for "register".
    std::string path = {};
    /// The file's.
    std::string text = {};

    bool operator==(const Repair& other) const = default;
};

/// One answer of the check-up.
struct CheckResult {
    Mark mark = Mark::Good;
    /// The kind of answer, such as "module-missing". Stays the same from version to version.
    std::string code;
    /// What was looked at.
    std::string title;
    std::string found;
    /// What to do; empty when nothing is to be done.
    std::string remedy = {};
    Repair repair = {};
};

using CheckResults = std::vector<CheckResult>;

/// Adds answers about one thing.
class CheckTopic {
public:
    CheckTopic(CheckResults& results, std::string title);

    void good(std::string code, std::string found);
    void warning(std::string code, std::string found, std::string remedy, Repair repair = {});
    void fault(std::string code, std::string found, std::string remedy, Repair repair = {});

private:
    CheckResults& results;
    std::string title;
};

/// Whether every answer is good.
bool isAllGood(const CheckResults& results);
