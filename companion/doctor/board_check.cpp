#include "companion/doctor/board_check.h"

#include "config/app_config.h"
#include "hid/hex_text.h"
#include "hid/usb_ids.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

namespace {

constexpr const char* rulePage = "\"Linux: boards that can't be opened\" in docs/troubleshooting.md";

std::string fourDigits(std::uint16_t id) {
    return hexText(std::array{static_cast<std::uint8_t>(id >> 8U), static_cast<std::uint8_t>(id)});
}

std::string idsText(const UsbIds& ids) {
    return fourDigits(ids.vendorId) + ':' + fourDigits(ids.productId);
}

std::optional<UsbIds> configuredIds(const AppConfig& config) {
    std::uint32_t vendorId = 0;
    std::uint32_t productId = 0;
    if (!parseUsbId(config.hid.vid, vendorId) || !parseUsbId(config.hid.pid, productId)) {
        return std::nullopt;
    }
    return UsbIds{static_cast<std::uint16_t>(vendorId), static_cast<std::uint16_t>(productId)};
}

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
    const std::size_t begin = rule.find(key);
    if (begin == std::string_view::npos) {
        return {};
    }
    const std::string_view value = rule.substr(begin + key.size());
    return std::string(value.substr(0, value.find('"')));
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

/// Those that mention HID device nodes and this vendor id.
std::vector<UdevRuleFile> rulesFor(const UsbIds& ids, const Machine& machine) {
    std::vector<UdevRuleFile> rules = ruleFiles(machine.udevRuleFolders);
    std::erase_if(rules, [&ids](const UdevRuleFile& file) {
        return file.text.find("hidraw") == std::string::npos ||
               upperCased(file.text).find(fourDigits(ids.vendorId)) == std::string::npos;
    });
    for (UdevRuleFile& rule : rules) {
        const std::string group = groupIn(rule.text);
        rule.missingGroup = group.empty() || machine.isInGroup(group) ? "" : group;
    }
    return rules;
}

/// Why a rule for the boards doesn't give their user the right to open them; empty if nothing is wrong with it.
std::string ruleFault(const UdevRuleFile& rule, const UsbIds& ids) {
    const bool isLate = FileSystem::fileName(rule.path) >= "73";
    if (rule.text.find("uaccess") != std::string::npos && isLate) {
        return "its name must begin with a number below 73";
    }
    const std::string lower = lowerCased(fourDigits(ids.vendorId));
    if (rule.text.find("ATTRS{idVendor}==\"" + lower) == std::string::npos &&
        rule.text.find("ATTRS{idVendor}") != std::string::npos) {
        return "the ids in it must be in lower case";
    }
    if (upperCased(rule.text).find(fourDigits(ids.productId)) == std::string::npos) {
        return "it lacks the product id " + fourDigits(ids.productId);
    }
    return {};
}

void judgeClosedOnLinux(const BoardFacts& facts, CheckTopic& topic) {
    const std::string found = idsText(*facts.ids) + " is plugged in, but you may not open it";
    if (facts.rules.empty()) {
        topic.fault("board-no-rule", found + ": there is no udev rule for it",
                    std::string("Install packaging/linux/70-vantrelbridge.rules: see ") + rulePage + '.');
        return;
    }
    const UdevRuleFile& rule = facts.rules.front();
    const std::string fault = ruleFault(rule, *facts.ids);
    const bool isForGroup = rule.text.find("uaccess") == std::string::npos && !rule.missingGroup.empty();
    if (isForGroup) {
        topic.fault("board-group-missing", found + ": the rule " + rule.path + " is for the group " + rule.missingGroup,
                    "Run \"sudo usermod -aG " + rule.missingGroup + " $USER\", then log in again.");
    } else if (!fault.empty()) {
        topic.fault("board-rule-wrong", found + " in spite of the rule " + rule.path,
                    "Correct the rule: " + fault + '.');
    } else {
        topic.fault("board-rule-without-effect", found + " in spite of the rule " + rule.path,
                    "Plug the board in again. A rule with \"uaccess\" only serves the user at the screen.");
    }
}

void judgeClosed(const BoardFacts& facts, CheckTopic& topic) {
    if (facts.hasUdev) {
        judgeClosedOnLinux(facts, topic);
    } else {
        topic.fault("board-closed", idsText(*facts.ids) + " is plugged in, but can't be opened",
                    "Close programs that may use it alone, such as its firmware tool.");
    }
}

void judgeBoard(const ListedBoard& board, CheckTopic& topic) {
    const std::string name = boardName(board);
    if (!board.writable) {
        topic.warning("board-read-only", name + " can't be written to, so its lights stay as they are",
                      "Check the permissions of its device, or close the program that uses it.");
    } else if (board.boardId.empty()) {
        topic.warning("board-without-identity", name + " doesn't answer the request for its identity",
                      "Plug it in again; if that doesn't help, update its firmware (docs/hid-protocol.md).");
    } else {
        topic.good("board-answers", name + " answers" + (board.role.empty() ? "" : ", role " + board.role));
    }
}

void judgeNone(const BoardFacts& facts, CheckTopic& topic) {
    if (facts.hasUdev && facts.unknownDevices > 0) {
        topic.fault("board-missing",
                    "no board with the ids " + idsText(*facts.ids) + "; " + std::to_string(facts.unknownDevices) +
                        " devices can't be opened, and one may be it",
                    std::string("See ") + rulePage + '.');
    } else {
        topic.fault("board-missing", "no board with the ids " + idsText(*facts.ids) + " is plugged in",
                    "Check the cable. \"vantrel boards --all\" shows the ids of what is plugged in; they belong in "
                    "config.json.");
    }
}

} // namespace

BoardFacts readBoardFacts(const Machine& machine, const std::string& configPath) {
    BoardFacts facts;
    AppConfig config;
    std::string ignored;
    facts.ids = loadAppConfig(configPath, config, ignored) ? configuredIds(config) : std::nullopt;
    facts.hasUdev = !machine.udevRuleFolders.empty();
    if (!facts.ids) {
        return facts;
    }
    facts.rules = rulesFor(*facts.ids, machine);
    for (ListedBoard& board : listBoards(machine.hid, &config)) {
        const std::optional<UsbIds> ids = board.opens ? std::nullopt : machine.idsOfDevice(board.path);
        if (board.matches) {
            facts.boards.push_back(std::move(board));
        } else if (ids == facts.ids) {
            facts.closedBoards.push_back(board.path);
        } else if (!board.opens && !ids) {
            ++facts.unknownDevices;
        }
    }
    return facts;
}

void judgeBoards(const BoardFacts& facts, CheckResults& results) {
    if (!facts.ids) {
        // The check of the configuration says so.
        return;
    }
    CheckTopic topic(results, "Boards");
    for (const ListedBoard& board : facts.boards) {
        judgeBoard(board, topic);
    }
    if (!facts.closedBoards.empty()) {
        judgeClosed(facts, topic);
    } else if (facts.boards.empty()) {
        judgeNone(facts, topic);
    }
}
