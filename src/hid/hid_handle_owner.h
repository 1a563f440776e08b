#pragma once

#include "platform/platform.h"

#include <string>

/// Owns an open handle of a transport, or none, and closes it when it is destroyed or gets another handle. The
/// transport must outlive it. Not synchronised, except that any thread may use the handle itself.
class HidHandleOwner {
public:
    HidHandleOwner() = default;
    HidHandleOwner(const HidTransport& transport, HidHandle handle) : transport(&transport), handle(handle) {}
    ~HidHandleOwner();
    HidHandleOwner(HidHandleOwner&& other) noexcept;
    HidHandleOwner& operator=(HidHandleOwner&& other) noexcept;
    HidHandleOwner(const HidHandleOwner&) = delete;
    HidHandleOwner& operator=(const HidHandleOwner&) = delete;

    /// Closes the handle now. Does nothing when there is none.
    void close();

    bool isOpen() const { return handle != invalidHidHandle; }

    /// The handle, for the transport's operations; invalidHidHandle when there is none.
    operator HidHandle() const { return handle; }

private:
    const HidTransport* transport = nullptr;
    HidHandle handle = invalidHidHandle;
};

/// Opens a path for reading and writing or, where that is refused, for reading alone. Owns nothing when both fail.
HidHandleOwner openForReading(const HidTransport& transport, const std::string& path, HidMode mode);
