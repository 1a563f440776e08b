#include "companion/doctor/board_check.h"

#include "config/app_config.h"
#include "hid/usb_ids.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* rulePage = "\"Linux: boards that can't be opened\" in docs/troubleshooting.md";

void judgeClosedOnLinux(const BoardFacts& facts, CheckTopic& topic) {
    const std::string found = usbIdsText(*facts.ids) + " is plugged in, but you may not open it";
    if (facts.rules.empty()) {
        topic.fault("board-no-rule", found + ": there is no udev rule for it",
                    std::string("Install packaging/linux/70-vantrelbridge.rules: see ") + rulePage + '.');
        return;
    }
    // A rule that should work says more than a wrong one beside it.
    const auto right = std::ranges::find_if(
        facts.rules, [&facts](const UdevRuleFile& rule) { return udevRuleFault(rule, *facts.ids).empty(); });
    const UdevRuleFile& rule = right == facts.rules.end() ? facts.rules.front() : *right;
    const std::string fault = udevRuleFault(rule, *facts.ids);
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
        topic.fault("board-closed", usbIdsText(*facts.ids) + " is plugged in, but can't be opened",
                    "Close programs that may have it to themselves, such as its firmware tool.");
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
                    "no board with the ids " + usbIdsText(*facts.ids) + "; " + std::to_string(facts.unknownDevices) +
                        " devices can't be opened; one of them may be the board",
                    std::string("See ") + rulePage + '.');
    } else {
        topic.fault("board-missing", "no board with the ids " + usbIdsText(*facts.ids) + " is plugged in",
                    "Check the cable. \"vantrel boards --all\" shows the ids of what is plugged in; they belong in "
                    "config.json.");
    }
}

} // namespace

BoardFacts readBoardFacts(const Machine& machine, const std::string& configPath) {
    BoardFacts facts;
    AppConfig config;
    std::string ignored;
    facts.ids = loadAppConfig(configPath, config, ignored) ? parseUsbIds(config.hid.vid, config.hid.pid) : std::nullopt;
    facts.hasUdev = !machine.udevRuleFolders.empty();
    if (!facts.ids) {
        return facts;
    }
    facts.rules = udevRulesFor(*facts.ids, machine);
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
