#include "wire/outbound_buffer.h"

void OutboundBuffer::consume(std::size_t count) {
    sent += count;
    if (sent == bytes.size()) {
        bytes.clear();
        sent = 0;
    } else if (sent > bytes.size() / 2) {
        // Moves fewer bytes than were sent since the last move, so sending stays linear.
        bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(sent));
        sent = 0;
    }
}
