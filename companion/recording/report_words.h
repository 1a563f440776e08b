#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

/// An input report as the step of a scenario that sends it again, without the header byte and the trailer, which the
/// bridge doesn't read: "press COM_SWAP", "turn HDG +1 speed=4 mode=1", "notice"; the bytes of one that it drops.
/// `controlName` gives the word for a control's number.
std::string reportWords(std::span<const std::uint8_t> report,
                        const std::function<std::string(std::uint16_t number)>& controlName);
