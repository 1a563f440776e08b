#include "simulation/scenarios/scenario_boards.h"

#include "hid/hex_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr std::string_view streamNames[] = {"sim", "log", "exit", "module"};

std::uint16_t usbId(ScenarioLine& line, const std::string& name, const std::string& digits) {
    const auto bytes = bytesFromHex(digits);
    if (!bytes || bytes->size() != 2) {
        line.fail('"' + digits + "\" isn't a " + name + ": expected four hexadecimal digits");
    }
    return static_cast<std::uint16_t>((*bytes)[0] << 8 | (*bytes)[1]);
}

HidProtocol::BoardId boardId(ScenarioLine& line, const std::string& digits) {
    const auto bytes = bytesFromHex(digits);
    HidProtocol::BoardId id{};
    if (!bytes || bytes->size() != id.size()) {
        line.fail('"' + digits + "\" isn't an id: expected sixteen hexadecimal digits, or the word none");
    }
    std::copy(bytes->begin(), bytes->end(), id.begin());
    return id;
}

/// Major and minor version, as in 1.2.
HidProtocol::ProtocolInfo protocolInfo(ScenarioLine& line, const std::string& version) {
    const std::size_t dot = std::min(version.find('.'), version.size());
    const auto major = wholeNumber(std::string_view(version).substr(0, dot), 0, 255);
    const auto minor = wholeNumber(std::string_view(version).substr(std::min(dot + 1, version.size())), 0, 255);
    if (!major || !minor) {
        line.fail('"' + version + "\" isn't a protocol version: write it as 1.2");
    }
    return {static_cast<std::uint8_t>(*major), static_cast<std::uint8_t>(*minor), 0};
}

void setOption(ScenarioLine& line, RigBoard& board, const std::string& name, const std::string& value) {
    static constexpr std::array<std::string_view, 6> known{"id", "serial", "vid", "pid", "port", "protocol"};
    if (name == "id") {
        board.model.boardId = value == "none" ? std::nullopt : std::optional(boardId(line, value));
    } else if (name == "serial") {
        board.model.serial = value;
    } else if (name == "vid") {
        board.model.vendorId = usbId(line, name, value);
    } else if (name == "pid") {
        board.model.productId = usbId(line, name, value);
    } else if (name == "port") {
        board.port = value;
    } else if (name == "protocol") {
        board.model.protocolInfo = protocolInfo(line, value);
    } else {
        line.fail(unknownWord("option of a board", name, known));
    }
}

} // namespace

RigBoard parseBoard(ScenarioLine& line, std::size_t position) {
    RigBoard board;
    board.name = line.word("the board's name");
    if (std::find(std::begin(streamNames), std::end(streamNames), board.name) != std::end(streamNames)) {
        line.fail('"' + board.name + "\" has a meaning of its own in a scenario: give the board another name");
    }
    // Each board has its own identity, also without one in the scenario.
    board.model.boardId->back() = static_cast<std::uint8_t>(position);
    while (!line.atEnd()) {
        const auto [name, value] = line.option("an option of the board");
        setOption(line, board, name, value);
    }
    return board;
}

const RigBoard& needBoard(ScenarioLine& line, const Scenario& scenario, const std::string& name) {
    const auto found = std::find_if(scenario.boards.begin(), scenario.boards.end(),
                                    [&name](const RigBoard& board) { return board.name == name; });
    if (found == scenario.boards.end()) {
        std::vector<std::string_view> names;
        for (const RigBoard& board : scenario.boards) {
            names.emplace_back(board.name);
        }
        line.fail(names.empty() ? "no board is declared: write \"board " + name + "\" above"
                                : unknownWord("board", name, names));
    }
    return *found;
}
