#include "companion/doctor/board_check.h"

#include "config/app_config.h"
#include "hid/hex_text.h"
#include "hid/usb_ids.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <cstdint>
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

/// The rules that mention HID device nodes and this vendor id. A file in an earlier folder replaces later ones of its
/// name.
std::vector<UdevRuleFile> rulesFor(const UsbIds& ids, const std::vector<std::string>& folders) {
    std::vector<UdevRuleFile> rules;
    std::vector<std::string> seen;
    for (const std::string& folder : folders) {
        for (const std::string& name : FileSystem::namesIn(folder)) {
            UdevRuleFile file{FileSystem::join(folder, name), {}};
            const bool isFirst = std::ranges::find(seen, name) == seen.end();
            if (isFirst && name.ends_with(".rules") && FileSystem::readFile(file.path, file.text)) {
                seen.push_back(name);
                const bool fits = file.text.find("hidraw") != std::string::npos &&
                                  upperCased(file.text).find(fourDigits(ids.vendorId)) != std::string::npos;
                if (fits) {
                    rules.push_back(std::move(file));
                }
            }
        }
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
    if (!fault.empty()) {
        topic.fault("board-rule-wrong", found + " in spite of the rule " + rule.path,
                    "Correct the rule: " + fault + '.');
    } else {
        topic.fault("board-rule-without-effect", found + " in spite of the rule " + rule.path,
                    "Plug the board in again. A rule with \"uaccess\" only serves the user at the screen, one with a "
                    "group only its members.");
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
    if (facts.unknownDevices > 0) {
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
    facts.rules = rulesFor(*facts.ids, machine.udevRuleFolders);
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
