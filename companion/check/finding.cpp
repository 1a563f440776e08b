#include "companion/check/finding.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

const char* severityName(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Hint:
        return "hint";
    }
    return "";
}

void addFinding(Findings& findings, Finding place, std::string message, std::string hint) {
    if (findings.size() >= mostFindings) {
        return;
    }
    place.message = std::move(message);
    place.hint = std::move(hint);
    findings.push_back(std::move(place));
}

namespace {

std::tuple<std::string, std::size_t, std::size_t> placeOf(const Finding& finding) {
    return {finding.file, finding.line, finding.column};
}

} // namespace

void mergeIntoErrors(Findings& findings) {
    std::map<std::tuple<std::string, std::size_t, std::size_t>, std::size_t> errors;
    Findings merged;
    for (const Finding& finding : findings) {
        if (finding.severity == Severity::Error) {
            errors[placeOf(finding)] = merged.size();
            merged.push_back(finding);
        }
    }
    for (const Finding& finding : findings) {
        const auto error = errors.find(placeOf(finding));
        if (finding.severity == Severity::Error) {
            continue;
        }
        if (error == errors.end()) {
            merged.push_back(finding);
        } else if (merged[error->second].hint.empty() || finding.code == "wrong-type" ||
                   finding.code == "boolean-switch") {
            merged[error->second].hint = finding.hint;
        }
    }
    findings = std::move(merged);
}

void sortFindings(Findings& findings, const std::vector<std::string>& files) {
    std::ranges::stable_sort(findings, {}, [&](const Finding& finding) {
        return std::tuple(std::ranges::find(files, finding.file) - files.begin(), finding.line, finding.column);
    });
}
