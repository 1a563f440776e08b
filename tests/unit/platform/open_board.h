#pragma once

#include "platform/platform.h"
#include "test_board.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>

/// A board that is open, and a reader of it.
class OpenBoard : public testing::Test {
protected:
    /// What a reader's pending reads write to must outlive the handle.
    ~OpenBoard() override { hid.close(handle); }

    /// Makes a reader of either kind; every system has the plain one.
    void openReader(bool singlePending = false) {
        handle = hid.open(board.path, HidAccess::ReadWrite, HidMode::Overlapped);
        ASSERT_NE(handle, invalidHidHandle);
        reader = singlePending ? hid.makeSinglePendingReader(handle) : hid.makeReader(handle);
    }

    HidReadStatus readStatus(std::chrono::milliseconds limit) const { return reader(limit).status; }

    /// What a read of another thread ends with when `happen` happens during it.
    template <typename Event>
    HidReadStatus statusOfReadDuring(Event happen) const {
        auto read = std::async(std::launch::async, [this] { return readStatus(std::chrono::hours(1)); });
        happen();
        return read.get();
    }

    /// The bytes of the next report. They come, so the limit is one that no healthy run comes near.
    std::string nextReport() const {
        const HidReadResult result = reader(std::chrono::seconds(60));
        EXPECT_EQ(result.status, HidReadStatus::Data);
        return {result.data.begin(), result.data.end()};
    }

    TestBoard board;
    HidTransport hid = board.transport();
    HidReader reader;
    HidHandle handle = invalidHidHandle;
};
