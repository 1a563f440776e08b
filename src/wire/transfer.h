#pragma once

#include <cstddef>

enum class TransferStatus {
    /// Moved `count` bytes, at least one.
    Done,
    /// Nothing can be moved now.
    WouldBlock,
    /// The peer ended its side in order. Only a receive reports it.
    Ended,
    /// The connection is broken.
    Failed,
};

struct Transfer {
    TransferStatus status = TransferStatus::Failed;
    std::size_t count = 0;
};
