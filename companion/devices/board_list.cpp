#include "companion/devices/board_list.h"

#include "hid/feature_reports.h"
#include "hid/hid_handle_owner.h"
#include "hid/usb_ids.h"

namespace {

bool hasConfiguredIds(const ListedBoard& board, const AppConfig* config) {
    return config != nullptr &&
           parseUsbIds(config->hid.vid, config->hid.pid) == UsbIds{board.vendorId, board.productId};
}

void readIdentity(const HidTransport& transport, HidHandle handle, ListedBoard& board) {
    HidProtocol::DeviceInfo info;
    HidProtocol::ProtocolInfo protocol;
    if (readDeviceInfo(transport, handle, info)) {
        board.boardId = HidProtocol::boardIdText(info);
    }
    if (readProtocolInfo(transport, handle, protocol)) {
        board.protocol = protocol;
    }
}

ListedBoard lookAt(const HidTransport& transport, const std::string& path, const AppConfig* config) {
    ListedBoard board;
    board.path = path;
    HidHandleOwner handle(transport, transport.open(path, HidAccess::ReadWrite, HidMode::Synchronous));
    board.writable = handle.isOpen();
    if (!board.writable) {
        handle = {transport, transport.open(path, HidAccess::ReadOnly, HidMode::Synchronous)};
    }
    HidAttributes attributes;
    board.opens = handle.isOpen() && transport.attributes(handle, attributes);
    if (!board.opens) {
        return board;
    }
    board.vendorId = attributes.vendorId;
    board.productId = attributes.productId;
    transport.serialNumber(handle, board.serial);
    board.matches = hasConfiguredIds(board, config);
    if (board.matches) {
        readIdentity(transport, handle, board);
        const DeviceEntry* const entry = findDeviceEntry(*config, boardName(board), -1);
        board.isListed = entry != nullptr;
        board.role = entry == nullptr ? "" : entry->role;
    }
    return board;
}

} // namespace

std::vector<ListedBoard> listBoards(const HidTransport& transport, const AppConfig* config) {
    std::vector<ListedBoard> boards;
    for (const std::string& path : transport.enumerate()) {
        boards.push_back(lookAt(transport, path, config));
    }
    return boards;
}

std::string boardName(const ListedBoard& board) {
    if (!board.boardId.empty()) {
        return board.boardId;
    }
    return board.serial.empty() ? board.path : board.serial;
}
