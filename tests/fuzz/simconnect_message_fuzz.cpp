// Bytes from the simulator's side, in pieces of any size, through the framing and into a callback that looks at a
// message as the bridge does.

#include "simconnect/simconnect_api.h"
#include "tests/fuzz/fuzz_support.h"
#include "wire/message_reader.h"
#include "wire/wire_session.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

struct Seen {
    std::size_t bytes = 0;
    std::uint32_t checksum = 0;
};

void lookAt(SimConnectRecv* message, std::uint32_t size, void* context) {
    auto& seen = *static_cast<Seen*>(context);
    require(size >= sizeof(SimConnectRecv), "a message has its head");
    require(message->dwSize == size, "a message is as long as it says");
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(message), size);
    for (const std::uint8_t byte : bytes) {
        seen.checksum = seen.checksum * 31 + byte;
    }
    seen.bytes += size;
}

} // namespace

// The first byte is the length of the pieces in which the rest arrives.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t pieceSize = data[0] + 1U;
    std::span<const std::uint8_t> rest(data + 1, size - 1);
    MessageReader reader(sizeof(SimConnectRecv));
    Seen seen;
    while (!rest.empty() && !reader.broken()) {
        const auto piece = rest.first(std::min(pieceSize, rest.size()));
        std::copy(piece.begin(), piece.end(), reader.prepare(piece.size()).begin());
        reader.commit(piece.size());
        handOutMessages(reader, &lookAt, &seen, [] { return true; });
        rest = rest.subspan(piece.size());
    }
    require(seen.bytes < size, "no more is handed out than came");
    return 0;
}
