#pragma once

#include <cstddef>

enum class TransferStatus {
    /// `count` bytes went or came, at least one.
    Done,
    /// Nothing can go or come just now.
    WouldBlock,
    /// The peer closed its side in order; only a receive says so.
    Ended,
    /// The connection is broken.
    Failed,
};

struct Transfer {
    TransferStatus status = TransferStatus::Failed;
    std::size_t count = 0;
};
