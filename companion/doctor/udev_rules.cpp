#include "companion/doctor/udev_rules.h"

#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string_view>

namespace {

std::string withoutComments(const std::string& text) {
    std::string rest;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        rest += trimmed(line).starts_with('#') ? "" : line + '\n';
    }
    return rest;
}

/// The value of GROUP="..."; empty if there is none.
std::string groupIn(std::string_view rule) {
    constexpr std::string_view key = "GROUP=\"";
    const std::size_t found = rule.find(key);
    if (found == std::string_view::npos) {
        return {};
    }
    const std::size_t begin = found + key.size();
    return std::string(rule.substr(begin, std::min(rule.find('"', begin), rule.size()) - begin));
}

/// The files of rules. One in an earlier folder replaces later ones of its name.
std::vector<UdevRuleFile> ruleFiles(const std::vector<std::string>& folders) {
    std::vector<UdevRuleFile> files;
    std::set<std::string> seen;
    for (const std::string& folder : folders) {
        for (const std::string& name : FileSystem::namesIn(folder)) {
            std::string text;
            const std::string path = FileSystem::join(folder, name);
            if (name.ends_with(".rules") && seen.insert(name).second && FileSystem::readFile(path, text)) {
                files.push_back({path, withoutComments(text), {}});
            }
        }
    }
    return files;
}

} // namespace

std::vector<UdevRuleFile> udevRulesFor(const UsbIds& ids, const Machine& machine) {
    std::vector<UdevRuleFile> rules = ruleFiles(machine.udevRuleFolders);
    std::erase_if(rules, [&ids](const UdevRuleFile& file) {
        return file.text.find("hidraw") == std::string::npos ||
               upperCased(file.text).find(usbIdText(ids.vendorId)) == std::string::npos;
    });
    for (UdevRuleFile& rule : rules) {
        const std::string group = groupIn(rule.text);
        rule.missingGroup = group.empty() || machine.isInGroup(group) ? "" : group;
    }
    return rules;
}

std::string udevRuleFault(const UdevRuleFile& rule, const UsbIds& ids) {
    const bool isLate = FileSystem::fileName(rule.path) >= "73";
    if (rule.text.find("uaccess") != std::string::npos && isLate) {
        return "its name must begin with a number below 73";
    }
    const std::string lower = lowerCased(usbIdText(ids.vendorId));
    if (rule.text.find("ATTRS{idVendor}==\"" + lower) == std::string::npos &&
        rule.text.find("ATTRS{idVendor}") != std::string::npos) {
        return "the ids in it must be in lower case";
    }
    const bool hasThemInCapitals = rule.text.find(usbIdsText(ids)) != std::string::npos;
    if (upperCased(rule.text).find("KERNELS==\"0003:" + usbIdsText(ids)) != std::string::npos && !hasThemInCapitals) {
        return "the ids in it must be in capital letters";
    }
    if (upperCased(rule.text).find(usbIdText(ids.productId)) == std::string::npos) {
        return "it lacks the product id " + usbIdText(ids.productId);
    }
    return {};
}
