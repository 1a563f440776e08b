#include "companion/trial/board_light.h"

#include "config/names.h"
#include "hid/hid_handle_owner.h"

namespace {

/// A place in the list of boards that match.
std::optional<std::size_t> numberIn(std::string_view text) {
    constexpr std::size_t mostDigits = 4;
    const bool isNumber =
        !text.empty() && text.size() <= mostDigits && text.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? std::optional<std::size_t>(std::stoul(std::string(text))) : std::nullopt;
}

} // namespace

const ListedBoard* findBoard(const std::vector<ListedBoard>& boards, std::string_view text) {
    const std::optional<std::size_t> wanted = numberIn(text);
    const ListedBoard* byNumber = nullptr;
    std::size_t number = 0;
    for (const ListedBoard& board : boards) {
        if (!board.matches) {
            continue;
        }
        const bool isId = !board.boardId.empty() && normalizeBoardId(board.boardId) == normalizeBoardId(text);
        if (isId || boardName(board) == text || board.serial == text) {
            return &board;
        }
        byNumber = wanted == number ? &board : byNumber;
        ++number;
    }
    return byNumber;
}

std::optional<LedEffect> effectNamed(std::string_view name, std::optional<std::int32_t> percent) {
    if (!isValidEffectName(name)) {
        return std::nullopt;
    }
    const OutputProfile profile = makeDefaultProfile();
    const std::string wanted = normalizeName(name);
    LedEffect effect;
    effect.brightness = profile.backlight.value;
    for (const LedEffect& known : {profile.simDisconnected, profile.batteryOff}) {
        effect = normalizeName(known.effect) == wanted ? known : effect;
    }
    effect.effect = wanted;
    effect.brightness = percent.value_or(effect.brightness);
    effect.param2 = percent.value_or(effect.param2);
    return effect;
}

bool showLight(const HidTransport& transport, const ListedBoard& board, const LedCommand& command, std::string& error) {
    const HidHandleOwner handle(transport, transport.open(board.path, HidAccess::ReadWrite, HidMode::Synchronous));
    if (!handle.isOpen()) {
        error = "the board can't be opened for writing: no permission, or another program has it to itself";
        return false;
    }
    const HidWriteResult result = transport.write(handle, HidProtocol::encodeLedCtl(command));
    if (!result.ok) {
        error = "the board doesn't take the report (system error " + std::to_string(result.error) + ')';
    }
    return result.ok;
}
