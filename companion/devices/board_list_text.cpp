#include "companion/devices/board_list.h"
#include "companion/json/json_text.h"
#include "hid/usb_ids.h"

namespace {

std::string protocolText(const HidProtocol::ProtocolInfo& info) {
    return std::to_string(info.protocolMajor) + '.' + std::to_string(info.protocolMinor);
}

std::string matchText(const ListedBoard& board, std::size_t number) {
    std::string text = board.boardId.empty() ? "doesn't report an identity; its name is " + boardName(board) + '\n'
                                             : "board " + board.boardId + '\n';
    text += "  number " + std::to_string(number) + '\n';
    text += board.protocol ? "  protocol version " + protocolText(*board.protocol) + '\n' : "";
    text += board.isListed ? "" : "  no entry in \"devices\" by this name\n";
    text += board.role.empty() ? "" : "  role " + board.role + '\n';
    text += board.writable ? "" : "  can't be written to: its lights stay as they are\n";
    return text;
}

} // namespace

std::string boardsText(const std::vector<ListedBoard>& boards) {
    std::string text;
    std::size_t matching = 0;
    for (const ListedBoard& board : boards) {
        if (!board.opens) {
            text += "????:????  can't be opened: no permission, or another program has it to itself\n";
        } else {
            text += usbIdsText({board.vendorId, board.productId}) + "  " +
                    (board.matches ? matchText(board, matching++) : "not of this configuration\n");
            text += board.serial.empty() ? "" : "  serial number " + board.serial + '\n';
        }
        text += "  " + board.path + "\n\n";
    }
    return text;
}

std::string boardsJson(const std::vector<ListedBoard>& boards) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const ListedBoard& board : boards) {
        nlohmann::ordered_json entry{{"path", board.path}, {"opens", board.opens}, {"writable", board.writable}};
        if (board.opens) {
            entry["vendorId"] = usbIdText(board.vendorId);
            entry["productId"] = usbIdText(board.productId);
            entry["serial"] = board.serial;
            entry["matches"] = board.matches;
        }
        if (board.matches) {
            entry["boardId"] = board.boardId;
            entry["protocolVersion"] = board.protocol ? protocolText(*board.protocol) : "";
            entry["role"] = board.role;
        }
        array.push_back(std::move(entry));
    }
    return jsonDocument(array);
}
